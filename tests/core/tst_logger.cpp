#include "logger.h"
#include "shorthand.h"

#include <QRegularExpression>
#include <QTemporaryDir>
#include <QThread>
#include <QtTest>

#include <vector>

namespace {

/// A log of its own with a clock that the test sets.
class TestLogger : public Logger
{
public:
    explicit TestLogger(const QString& folder, const QDateTime& time = QDateTime::currentDateTime())
        : Logger([this] { return QDateTime::fromMSecsSinceEpoch(m_time.load()); })
    {
        setTime(time);
        setLocation(QDir(folder));
    }

    void setTime(const QDateTime& time) { m_time.store(time.toMSecsSinceEpoch()); }
    using Logger::openFile;
    using Logger::systemTime;

private:
    std::atomic<qint64> m_time{0};
};

void makeFile(const QString& path, const QDateTime& modified = QDateTime())
{
    writeFile(path, "x");
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(!modified.isValid() || file.setFileTime(modified, QFileDevice::FileModificationTime));
}

void write(Logger& logger, const QString& message)
{
    logger.log(Logger::ERROR, message, __FILE__, __LINE__);
}

QString fileName(const QDate& date)
{
    return date.toString(s("'/QuendraClientLog-'MM-dd-yyyy'.txt'"));
}

QStringList names(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

} // namespace

class LoggerTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults()
    {
        QCOMPARE(&Logger::inst(), &Logger::inst());
        QCOMPARE(Logger::inst().level(), Logger::ERROR);
        QCOMPARE(Logger::inst().location().path(),
                 QDir::fromNativeSeparators(qEnvironmentVariable("APPDATA")) +
                     s("/Quendra Client Software/Logs"));
        QVERIFY(Logger::inst().currentFile().isEmpty());

        const QTemporaryDir dir;
        const QDateTime before = QDateTime::currentDateTime();
        const QDateTime time = TestLogger(dir.path()).systemTime();
        QVERIFY(before <= time && time <= QDateTime::currentDateTime());
        QCOMPARE(time.offsetFromUtc(), before.offsetFromUtc());
    }

    void lineFormat()
    {
        const QByteArray nearlyMillion(1024 * 1024 - 1, 'x');
        const QString half = QString::fromLatin1(nearlyMillion);
        const std::tuple<QTime, int, const char*, QString, QByteArray> lines[] = {
            {QTime(8, 1, 31, 123), 1, "/src/contactmanager.cpp", s("Broken."),
             "[11-15-2026 08:01:31 AM:123000] [ERROR  ] [contactmanager.cpp:134   ] Broken.\r\n"},
            {QTime(0, 0, 0, 5), 2, "a.cpp", s("%1 %2 %99"),
             "[11-15-2026 12:00:00 AM:005000] [WARNING] [a.cpp:134                ] %1 %2 %99\r\n"},
            {QTime(13, 59, 59, 999), 4, "../q/outlookcontactprovider.cpp", s("Größe\n2"),
             "[11-15-2026 01:59:59 PM:999000] [DEBUG  ] [outlookcontactprovider.cpp:134] "
             "Gr\xc3\xb6\xc3\x9f\x65\n2\r\n"},
            // longer than a piece, a character across its end
            {QTime(8, 1, 31, 123), 1, "a.cpp", half + s("😀") + half + s("é"),
             "[11-15-2026 08:01:31 AM:123000] [ERROR  ] [a.cpp:134                ] " + nearlyMillion +
                 "\xf0\x9f\x98\x80" + nearlyMillion + "\xc3\xa9\r\n"},
            {QTime(12, 0), -3, nullptr, QString(),
             "[11-15-2026 12:00:00 PM:000000] [       ] [:134                     ] \r\n"}};
        for (const auto& [time, level, file, message, line] : lines) {
            const QTemporaryDir dir;
            const QDate day(2026, 11, 15);
            TestLogger logger(dir.path(), QDateTime(day, time));
            logger.setLevel(Logger::DEBUG);
            QVERIFY(readFile(logger.currentFile()).endsWith("] Setting log level 4\r\n"));
            const int before = readFile(dir.path() + fileName(day)).size();
            logger.log(static_cast<Logger::LEVEL>(level), message, file, 134);
            QCOMPARE(logger.currentFile(), dir.path() + fileName(day));
            QCOMPARE(readFile(logger.currentFile()).mid(before), line);
        }
    }

    void levelFilters()
    {
        for (int threshold = Logger::NONE; threshold <= Logger::DEBUG; ++threshold) {
            const QTemporaryDir dir;
            TestLogger logger(dir.path());
            logger.setLevel(static_cast<Logger::LEVEL>(threshold));
            for (int level = Logger::ERROR; level <= Logger::DEBUG; ++level)
                logger.log(static_cast<Logger::LEVEL>(level), s("m"), __FILE__, __LINE__);
            const QByteArray text = readFile(logger.currentFile());
            QCOMPARE(text.count("] m\r\n"), threshold);
            QCOMPARE(text.count("Setting log level"), threshold >= Logger::INFO ? 1 : 0);
        }
    }

    void midnight()
    {
        const QTemporaryDir dir;
        const QDate day = QDate::currentDate();
        TestLogger logger(dir.path(), QDateTime(day, QTime(23, 59, 59, 999)));
        write(logger, s("old"));
        logger.setTime(QDateTime(day.addDays(1), QTime(0, 0)));
        write(logger, s("new"));
        logger.setTime(QDateTime(day, QTime(23, 59, 58))); // a clock that was set back
        write(logger, s("late"));

        const QByteArray old = readFile(dir.path() + fileName(day));
        QVERIFY(old.contains("] old\r\n") && old.endsWith("] late\r\n"));
        QVERIFY(readFile(dir.path() + fileName(day.addDays(1))).endsWith("] new\r\n"));
    }

    void threadsLoseAndMixNothing()
    {
        const QTemporaryDir dir;
        const int threadCount = 8;
        const int lineCount = 400;
        const QDate day = QDate::currentDate();
        TestLogger logger(dir.path(), QDateTime(day, QTime(23, 59)));
        std::vector<std::unique_ptr<QThread>> threads;
        for (int t = 0; t < threadCount; ++t) {
            threads.emplace_back(QThread::create([&logger, t, day] {
                for (int i = 0; i < lineCount; ++i) {
                    const QString text = s("<%1/%2>%3<end>").arg(t).arg(i);
                    write(logger, text.arg(QString(i % 97 * 20, QLatin1Char('x'))));
                    // Midnight comes and goes while the others write, and the file is taken away.
                    if (i % 50 == t)
                        logger.setTime(QDateTime(day.addDays(i / 50 % 2), QTime(12, 0)));
                    if (i % 70 == t)
                        logger.releaseLogFile();
                }
            }));
            threads.back()->start();
        }
        for (const auto& thread : threads)
            QVERIFY(thread->wait(120000));

        const QRegularExpression whole(s("^\\[[^]]*\\] \\[ERROR  \\] \\[[^]]*\\] <(\\d+/\\d+)>x*<end>\r$"));
        QSet<QString> seen;
        int lines = 0;
        for (const QString& name : names(dir.path())) {
            QByteArray text = readFile(dir.filePath(name));
            QVERIFY(text.endsWith("\r\n"));
            text.chop(1);
            for (const QByteArray& line : text.split('\n')) {
                const QRegularExpressionMatch match = whole.match(QString::fromUtf8(line));
                QVERIFY2(match.hasMatch(), line.constData());
                seen.insert(match.captured(1));
                ++lines;
            }
        }
        QCOMPARE(names(dir.path()).size(), 2);
        QCOMPARE(lines, threadCount * lineCount);
        QCOMPARE(seen.size(), lines);
    }

    void openingPrunesToThirty()
    {
        const QTemporaryDir dir;
        const QDateTime base = QDateTime::currentDateTime().addDays(-1);
        for (int i = 0; i < 35; ++i)
            makeFile(dir.filePath(s("%1%2").arg(i % 2 ? s(".h") : QString()).arg(i)), base.addSecs(-60 * i));
        QVERIFY(QDir(dir.path()).mkdir(s("folder")));

        QVERIFY(TestLogger(dir.path()).openFile(QDate::currentDate()));
        const QStringList left = names(dir.path());
        QCOMPARE(left.size(), 31);
        QVERIFY(left.contains(fileName(QDate::currentDate()).mid(1)));
        for (int i = 30; i < 35; ++i)
            QVERIFY(!left.contains(QString::number(i)) && !left.contains(s(".h%1").arg(i)));
    }

    void undeletableFileIsReportedOnce()
    {
        const QTemporaryDir dir;
#ifdef Q_OS_WIN
        // Nobody deletes a file that is open; this one is older than the others.
        const QString undeletable = QFileInfo(dir.path()).canonicalFilePath() + s("/held");
        QFile held(undeletable);
        QVERIFY(held.open(QIODevice::WriteOnly));
#else
        // Nobody, root included, deletes this one, and the link to it counts as the oldest of the folder.
        const QString undeletable = s("/proc/version");
        QVERIFY(QFile::link(undeletable, dir.filePath(s("link"))));
#endif
        for (int i = 0; i < 31; ++i)
            makeFile(dir.filePath(QString::number(i)), QDateTime::currentDateTime().addYears(1).addSecs(-i));

        TestLogger logger(dir.path());
        write(logger, s("the line"));
        const QByteArray text = readFile(logger.currentFile());
        QCOMPARE(text.count("] Failed to remove the file: " + undeletable.toUtf8() + "\r\n"), 1);
        QVERIFY(text.endsWith("] the line\r\n"));
        QVERIFY(!QFile::exists(dir.filePath(s("30"))));
        QVERIFY(QFile::exists(dir.filePath(s("29"))));
    }

    void oldLogsGo()
    {
        const QTemporaryDir dir;
        const QDate today = QDate::currentDate();
        QStringList left{s("QuendraClientLog.bak"), s("my QuendraClientLog.txt")};
        for (const QString& name : left + QStringList{s("quendraCLIENTLog-old.TXT")})
            makeFile(dir.filePath(name));

        // Files are as old as the clock is ahead.
        TestLogger logger(dir.path(), QDateTime(today.addDays(29), QTime(12, 0)));
        write(logger, s("1"));
        QCOMPARE(names(dir.path()).size(), 4);
        logger.setTime(QDateTime(today.addDays(30), QTime(12, 0)));
        logger.log(Logger::DEBUG, s("filtered"), __FILE__, __LINE__);
        QCOMPARE(names(dir.path()).size(), 4);
        write(logger, s("2"));
        write(logger, s("3"));

        left << fileName(today.addDays(30)).mid(1);
        std::sort(left.begin(), left.end());
        // The file of day 29 was still open when day 30 began, so it went with the line after.
        QCOMPARE(names(dir.path()), left);
        QCOMPARE(readFile(logger.currentFile()).count("\r\n"), 2);
    }

    void locationMoves()
    {
        const QTemporaryDir dir;
        const QString first = dir.filePath(s("first"));
        const QString second = dir.filePath(s("sub/second"));
        TestLogger logger(first);
        logger.setLevel(Logger::INFO);
        const QString oldFile = logger.currentFile();
        const QByteArray before = readFile(oldFile);
        logger.setLocation(QDir(first));
        QCOMPARE(readFile(oldFile), before);
        logger.setLocation(QDir(second));
        QCOMPARE(logger.location().path(), second);
        QVERIFY(readFile(oldFile).endsWith("] Change log location to: " + second.toUtf8() + "\r\n"));
        QCOMPARE(logger.currentFile(), second + fileName(QDate::currentDate()));
        const QByteArray moved = readFile(logger.currentFile());
        QVERIFY(moved.endsWith("] Location has changed: " + second.toUtf8() + "\r\n"));
        QCOMPARE(moved.count("\r\n"), 1);

        logger.releaseLogFile();
        QVERIFY(logger.currentFile().isEmpty());
        write(logger, s("again"));
        QCOMPARE(readFile(logger.currentFile()).count("\r\n"), 2);
    }

    void folderThatCannotBeMadeDropsLines()
    {
        const QTemporaryDir dir;
        const QString folder = dir.filePath(s("file"));
        makeFile(folder);
        TestLogger logger(folder);
        write(logger, s("dropped"));
        QVERIFY(logger.currentFile().isEmpty());
        QVERIFY(QFile::remove(folder));
        write(logger, s("kept"));
        QCOMPARE(readFile(logger.currentFile()).count("\r\n"), 1);
    }
};

QTEST_GUILESS_MAIN(LoggerTest)
#include "tst_logger.moc"
