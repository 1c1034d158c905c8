// Lines of the logger, compared with the same lines written through QFile.

#include "bench.h"
#include "logger.h"

#include <QCoreApplication>
#include <QDate>
#include <QDir>
#include <QFile>
#include <QLocale>
#include <QTemporaryDir>

#include <mutex>
#include <thread>

namespace {

const int threads = 4;
const int oldFiles = 30;

/// A log folder as it is after a month of use.
class LogFolder
{
public:
    LogFolder()
    {
        // without today's file, to which the logger would append
        for (int day = 1; day <= oldFiles; ++day) {
            QFile file(path() + QLatin1Char('/') + name(QDate::currentDate().addDays(-day)));
            if (!file.open(QIODevice::WriteOnly) || file.write("old\r\n") != 5)
                fail("old log");
        }
    }

    QString path() const { return m_dir.path(); }

    static QString name(const QDate& date)
    {
        return QLocale::c().toString(date, QStringLiteral("'QuendraClientLog'-MM-dd-yyyy.'txt'"));
    }

    qint64 linesOf(const QString& file) const
    {
        QFile log(path() + QLatin1Char('/') + file);
        return log.open(QIODevice::ReadOnly) ? log.readAll().count('\n') : -1;
    }

private:
    QTemporaryDir m_dir;
};

QString message(int round, int thread, int i)
{
    return QStringLiteral("Message %1 of thread %2 in round %3, as long as most")
        .arg(i)
        .arg(thread)
        .arg(round);
}

template <typename Work>
double inThreads(Work work)
{
    return milliseconds([&] {
        std::vector<std::thread> running;
        running.reserve(threads);
        for (int i = 0; i < threads; ++i)
            running.emplace_back([&work, i] { work(i); });
        for (std::thread& thread : running)
            thread.join();
    });
}

double logged(int round, int lines)
{
    const LogFolder folder;
    Logger& logger = Logger::inst();
    logger.setLevel(Logger::ERROR);
    logger.setLocation(QDir(folder.path()));
    const double time = inThreads([&](int thread) {
        for (int i = 0; i < lines / threads; ++i)
            logger.log(Logger::ERROR, message(round, thread, i), __FILE__, __LINE__);
    });
    logger.releaseLogFile();
    if (folder.linesOf(LogFolder::name(QDate::currentDate())) != qint64(lines / threads) * threads)
        fail("logger");
    return time;
}

double plain(int round, int lines)
{
    const LogFolder folder;
    std::mutex mutex;
    QFile file(folder.path() + QStringLiteral("/QuendraClientLog.txt"));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        fail("plain log");
    const double time = inThreads([&](int thread) {
        for (int i = 0; i < lines / threads; ++i) {
            const QStringList names = QDir(folder.path()).entryList(QDir::Files, QDir::Unsorted);
            if (names.size() != oldFiles + 1)
                fail("plain listing");
            const QByteArray line =
                QByteArray("[11-15-2026 08:01:31 AM:123000] [ERROR  ] [bench_logger.cpp:75      ] ") +
                message(round, thread, i).toUtf8() + "\r\n";
            const std::lock_guard<std::mutex> lock(mutex);
            file.write(line);
            file.flush();
        }
    });
    file.close();
    if (folder.linesOf(QStringLiteral("QuendraClientLog.txt")) != qint64(lines / threads) * threads)
        fail("plain logger");
    return time;
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    Bench bench(argc, argv);
    const int lines = bench.size(20000);
    bench.ratio(
        "logger", 1.3, [=](int round) { return logged(round, lines); },
        [=](int round) { return plain(round, lines); }, 9);
    return bench.exitCode();
}
