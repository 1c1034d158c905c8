#include "command.h"
#include "logger.h"
#include "terminal.h"

#include <QCoreApplication>
#include <QStandardPaths>
#include <QTextCodec>

namespace {

/// What Qt and the library have to remark goes to the log: standard error is for sentences that say what to
/// do.
void logMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    // the logger itself may give rise to a remark
    static thread_local bool busy = false;
    if (busy)
        return;
    busy = true;
    const Logger::LEVEL level = type == QtDebugMsg || type == QtInfoMsg ? Logger::DEBUG
                                : type == QtWarningMsg                  ? Logger::WARNING
                                                                        : Logger::ERROR;
    Logger::inst().log(level, text, context.file ? context.file : "qt", context.line);
    busy = false;
}

} // namespace

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
    qInstallMessageHandler(logMessage);
    return runCommandLine(QCoreApplication::arguments());
}
