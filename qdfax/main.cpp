#include "command.h"
#include "terminal.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QTextCodec>

int main(int argc, char** argv)
{
    Terminal::installInterrupt();

    // Names, arguments and the settings file are UTF-8 whatever the locale: in the C locale everything
    // outside ASCII would turn into question marks.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QCoreApplication application(argc, argv);

    // the library keeps everything below this folder and looks for no other
    if (qEnvironmentVariableIsEmpty("APPDATA")) {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        qputenv("APPDATA", folder.toLocal8Bit());
    }
    return runCommandLine(QCoreApplication::arguments());
}
