#include "command.h"
#include "logger.h"
#include "terminal.h"
#include "text.h"

#include <QApplication>
#include <QStandardPaths>
#include <QTextCodec>

#include <cstdlib>
#include <memory>

namespace {

/// Messages of Qt and the library go to the log; standard error is for errors that the user can act upon.
void logMessage(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    // the logger itself may cause a message: avoid recursion
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

/// Qt aborts the program if it cannot open a display.
void sayNoDisplay(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    logMessage(type, context, text);
    if (type != QtFatalMsg)
        return;
    Terminal::writeError(
        QStringLiteral("qdfax: There is no display to open a window on. \"qdfax captures list\" and "
                       "the commands beside it need none."));
    std::_Exit(ExitStatus::Error);
}

std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    if (!needsDisplay(arguments))
        return std::make_unique<QCoreApplication>(argc, argv);
    qInstallMessageHandler(sayNoDisplay);
    auto application = std::make_unique<QApplication>(argc, argv);
    // commands end themselves; closing a window may open another one
    QApplication::setQuitOnLastWindowClosed(false);
    return application;
}

} // namespace

int main(int argc, char** argv)
{
    Terminal::installInterrupt();

    // Names, arguments and the settings file are UTF-8 whatever the locale: in the C locale everything
    // outside ASCII would turn into question marks.
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));

    // the library keeps all its files below this folder
    if (qEnvironmentVariableIsEmpty("APPDATA")) {
        const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
        qputenv("APPDATA", folder.toLocal8Bit());
    }
    const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
    qInstallMessageHandler(logMessage);
    Text::useLanguageOfUser();
    return runCommandLine(QCoreApplication::arguments());
}
