#include "logger.h"

#include "appfolder_p.h"

#include <QDateTime>
#include <QFileInfo>
#include <QLocale>
#include <QObject>

#include <cstdio>
#include <utility>

namespace {

/// The argument of removeOldLogs(): files of the last 30 days are kept.
const int keptDays = -30;

/// The number of files of any name that are kept in the folder when a file is opened.
const int keptFiles = 30;

/// How much of a message is encoded and written at once, in characters.
const int pieceSize = 1024 * 1024;

const char* const levelLabels[] = {"", "ERROR", "WARNING", "INFO", "DEBUG"};

QString levelLabel(Logger::LEVEL level)
{
    return QLatin1String(level >= Logger::NONE && level <= Logger::DEBUG ? levelLabels[level] : "");
}

QString dailyFileName(const QDate& date)
{
    return QLocale::c().toString(date, QStringLiteral("'QuendraClientLog'-MM-dd-yyyy.'txt'"));
}

/// Whether a name matches "QuendraClientLog*.txt", like QDir without case. QDir's own matching takes longer
/// than listing the folder.
bool isDailyFileName(const QString& name)
{
    const QLatin1String begin("QuendraClientLog");
    const QLatin1String end(".txt");
    return name.size() >= begin.size() + end.size() && name.startsWith(begin, Qt::CaseInsensitive) &&
           name.endsWith(end, Qt::CaseInsensitive);
}

/// The time at the beginning of a line, "MM-dd-yyyy hh:mm:ss AP:zzz000". Formatted by hand: parsing a format
/// string for each line takes longer than writing the line.
QString timeText(const QDateTime& dateTime)
{
    const QDate date = dateTime.date();
    const QTime time = dateTime.time();
    const int hour = time.hour() % 12;
    char text[64];
    static_cast<void>(std::snprintf(text, sizeof(text), "%02d-%02d-%04d %02d:%02d:%02d %s:%03d000",
                                    date.month(), date.day(), date.year(), hour ? hour : 12, time.minute(),
                                    time.second(), time.hour() < 12 ? "AM" : "PM", time.msec()));
    return QString::fromLatin1(text);
}

/// A time in local time. If TZ is not set, the C library reads the zone file for each conversion, two of them
/// per line, so the offset from UTC is cached for a minute.
QDateTime localTime(qint64 msecs)
{
    // the minutes since 1970 and, in the lowest bits, the offset from UTC in seconds plus a day
    static std::atomic<qint64> known{-1};
    constexpr qint64 day = 86400;
    constexpr int bits = 18;

    const qint64 minute = msecs / 60000;
    qint64 packed = known.load(std::memory_order_relaxed);
    if (packed >> bits != minute) {
        const int offset = QDateTime::fromMSecsSinceEpoch(minute * 60000).offsetFromUtc();
        packed = (minute << bits) + offset + day;
        known.store(packed, std::memory_order_relaxed);
    }
    const auto offset = static_cast<int>((packed & ((1 << bits) - 1)) - day);
    return QDateTime::fromMSecsSinceEpoch(msecs, Qt::OffsetFromUTC, offset);
}

/// The date of a file's creation, or of its last modification if the file system has none: an invalid date
/// compares as older than every other, so all logs would be deleted.
QDate creationDate(const QFileInfo& info)
{
    const QDateTime birth = info.birthTime();
    return (birth.isValid() ? birth : info.lastModified()).date();
}

} // namespace

Logger::Logger(std::function<QDateTime()> clock)
    : m_clock(std::move(clock))
    , m_dir(appFolder(QStringLiteral("/Logs")))
{}

Logger::~Logger()
{
    if (m_file.isOpen())
        m_file.close();
}

Logger& Logger::inst()
{
    static Logger logger;
    return logger;
}

QDateTime Logger::systemTime()
{
    return localTime(QDateTime::currentMSecsSinceEpoch());
}

void Logger::log(LEVEL level, const QString& message, const char* file, int line)
{
    if (level > this->level())
        return;

    removeOldLogs(keptDays);

    // The time is also read under the lock, so that the lines of a file are ordered by time, and no line of
    // yesterday is written to today's file.
    const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
    const QDateTime time = m_clock();
    if (!m_file.isOpen() || time.date() != m_date)
        openFile(time.date());
    if (!m_file.isOpen())
        return;

    const QMutexLocker locker(&m_mutex);
    const QString place = QStringLiteral("%1:%2").arg(QFileInfo(QString::fromLocal8Bit(file)).fileName(),
                                                      QString::number(line));
    QByteArray bytes = QStringLiteral("[%1] [%2] [%3] ")
                           .arg(timeText(time), levelLabel(level).leftJustified(7), place.leftJustified(25))
                           .toUtf8();
    // A message may be a reply of hundreds of megabytes: only a piece of it is copied at a time.
    int at = 0;
    while (message.size() - at > pieceSize) {
        const int length = pieceSize + int(message.at(at + pieceSize - 1).isHighSurrogate());
        m_file.write(bytes + message.midRef(at, length).toUtf8());
        bytes.clear();
        at += length;
    }
    m_file.write(bytes + message.midRef(at).toUtf8() + "\r\n");
    m_file.flush();
}

void Logger::setLevel(LEVEL level)
{
    m_level.store(level, std::memory_order_relaxed);
    log(INFO, QObject::tr("Setting log level %1", "Logger").arg(static_cast<int>(level)), __FILE__, __LINE__);
}

void Logger::setLocation(const QDir& dir)
{
    const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
    if (dir.path() == m_dir.path())
        return;
    log(INFO, QObject::tr("Change log location to: ", "Logger") + dir.path(), __FILE__, __LINE__);
    if (m_file.isOpen())
        m_file.close();
    m_dir = dir;
    log(INFO, QObject::tr("Location has changed: ", "Logger") + m_dir.path(), __FILE__, __LINE__);
}

QString Logger::currentFile()
{
    const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
    return m_file.isOpen() ? m_file.fileName() : QString();
}

void Logger::releaseLogFile()
{
    const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
    if (m_file.isOpen())
        m_file.close();
}

void Logger::removeOldLogs(int days)
{
    const QDate limit = m_clock().date().addDays(days);
    QString path;
    QString openPath;
    QSet<QString> young;
    {
        const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
        path = m_dir.path();
        if (m_file.isOpen())
            openPath = m_file.fileName();
        if (m_youngPath != path || m_youngLimit != limit) {
            m_young.clear();
            m_youngPath = path;
            m_youngLimit = limit;
        }
        young = m_young;
    }

    QStringList found;
    const QStringList names = QDir(path).entryList(QDir::Files, QDir::Unsorted);
    for (const QString& name : names) {
        // Reading each file's times costs far more than listing the folder, and this runs for every line.
        if (!isDailyFileName(name) || young.contains(name))
            continue;
        const QFileInfo file(path + QLatin1Char('/') + name);
        if (creationDate(file) > limit) {
            if (file.birthTime().isValid())
                found.append(name);
        } else if (name != QFileInfo(openPath).fileName()) {
            // Windows cannot delete an open file; elsewhere later lines would be written to an unlinked file.
            file.dir().remove(name);
        }
    }

    if (!found.isEmpty()) {
        const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
        if (m_youngPath == path && m_youngLimit == limit) {
            for (const QString& name : qAsConst(found))
                m_young.insert(name);
        }
    }
}

bool Logger::openFile(const QDate& date)
{
    const std::lock_guard<std::recursive_mutex> rollover(m_rollover);
    if (m_file.isOpen())
        m_file.close();
    m_date = date;

    const QString folder = m_dir.path() + QLatin1Char('/');
    QDir().mkpath(folder);

    // A failed deletion logs, which calls this function again because the file is closed. Pruning again would
    // recurse infinitely.
    if (!m_pruning) {
        m_pruning = true;
        QFileInfoList files = QDir(folder).entryInfoList(QDir::Files | QDir::Hidden, QDir::Time);
        while (files.size() > keptFiles) {
            const QString oldest = files.takeLast().canonicalFilePath();
            if (!QFile::remove(oldest)) {
                log(ERROR, QObject::tr("Failed to remove the file: ", "Logger") + oldest, __FILE__, __LINE__);
            }
        }
        m_pruning = false;

        // Such a line has opened the file, after midnight that of the next day.
        if (m_file.isOpen())
            m_file.close();
        m_date = date;
    }

    m_file.setFileName(folder + dailyFileName(date));
    return m_file.open(QIODevice::WriteOnly | QIODevice::Append);
}
