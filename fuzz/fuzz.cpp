#include "fuzz.h"

#include "logger.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>
#include <QTextCodec>

#include <cstdio>
#include <cstdlib>
#include <ctime>

QMap<QByteArray, FuzzTarget>& fuzzTargets()
{
    static QMap<QByteArray, FuzzTarget> targets;
    return targets;
}

bool addFuzzTarget(const char* name, FuzzTarget target)
{
    fuzzTargets().insert(name, target);
    return true;
}

QString fuzzFolder()
{
    static const QString memory = QStringLiteral("/dev/shm");
    static const QTemporaryDir folder((QFileInfo(memory).isWritable() ? memory : QDir::tempPath()) +
                                      QStringLiteral("/fuzz-XXXXXX"));
    return folder.path();
}

void startFuzzing(bool log)
{
    qputenv("LC_ALL", "C.UTF-8");
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8")); // for Windows, where no variable does
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // a zone with summer time: some local times do not exist
    qputenv("TZ", "Europe/Berlin");
#ifdef Q_OS_UNIX
    tzset();
#endif
    qputenv("APPDATA", fuzzFolder().toLocal8Bit());
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    // the targets provoke the library's warnings all the time
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& text) {
        if (type == QtCriticalMsg || type == QtFatalMsg)
            std::fprintf(stderr, "%s\n", qPrintable(text));
    });
    Logger::inst().setLevel(log ? Logger::DEBUG : Logger::NONE);
}

void brokenPromise(const char* promise, const QString& detail, const char* file, int line)
{
    std::fprintf(stderr, "%s:%d: does not hold: %s\n%s\n", file, line, promise, qPrintable(detail));
    std::abort();
}
