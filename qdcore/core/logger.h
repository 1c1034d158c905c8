#pragma once

#include "qdcore_global.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QMutex>
#include <QSet>
#include <QString>

#include <atomic>
#include <functional>
#include <mutex>

// The Windows headers define these as macros, and a macro would replace our enumerators. Include those
// headers first.
#undef NONE
#undef ERROR
#undef WARNING
#undef INFO
#undef DEBUG

/**
 * The one diagnostic log of the process: text lines in one file a day.
 *
 * Every class of the library logs through Logger::inst(). The file of a day is named
 * QuendraClientLog-MM-dd-yyyy.txt and stands in the user's application-data folder under "Quendra Client
 * Software/Logs" unless setLocation() says otherwise. Files older than 30 days are deleted, and when a
 * day's file is opened, the folder is pruned to 30 files of any name beside it.
 *
 * log(), setLevel() and level() may be called from any thread: no line is lost and no two lines mix, also
 * across midnight. Nothing here reports an error; a line that cannot be written is dropped, and the next one
 * tries again.
 */
class QDCORE_EXPORT Logger
{
public:
    /// How important a message is. A message is written when its level is not above the logger's.
    enum LEVEL : qint32 {
        NONE = 0,    ///< As the logger's level: nothing is written.
        ERROR = 1,   ///< A failure. The level after start.
        WARNING = 2, ///< Something odd that was coped with.
        INFO = 3,    ///< What the logger itself does.
        DEBUG = 4    ///< Everything, requests and whole replies included.
    };

    /// The single instance, made on first use and destroyed at exit.
    static Logger& inst();

    /// Writes one line. @p file and @p line are those of the calling source; only the file's name is printed.
    void log(LEVEL level, const QString& message, const char* file, int line);

    /// Sets the most verbose level that is written.
    void setLevel(LEVEL level);
    /// The most verbose level that is written: ERROR until it is set.
    LEVEL level() const { return m_level.load(std::memory_order_relaxed); }

    /// Moves the log to another folder; the next line opens the day's file there. Nothing happens when the
    /// path equals the current one as text.
    void setLocation(const QDir& dir);

    /// The log folder. For the thread that calls setLocation().
    const QDir& location() const { return m_dir; }

    /// The full path of the open log file, empty when none is open.
    QString currentFile();

    /// Closes the log file, for instance so that it can be copied. The next line opens it again.
    void releaseLogFile();

    /// Deletes the daily files created on or before today plus @p days, so -30 keeps the last 30 days; never
    /// the open one. Failures are ignored. Runs by itself on each line that passes the level.
    void removeOldLogs(int days);

protected:
    /// @p clock gives local time; the system's by default.
    explicit Logger(std::function<QDateTime()> clock = systemTime);
    ~Logger();
    Q_DISABLE_COPY(Logger)

    /// Opens the file of a day, after pruning the folder to 30 other files. Returns whether it is open.
    bool openFile(const QDate& date);

    /// The system's local time.
    static QDateTime systemTime();

private:
    std::function<QDateTime()> m_clock;
    QDate m_date;                      ///< The day of the open file, invalid at first.
    QFile m_file;                      ///< The file of m_date.
    QDir m_dir;                        ///< The log folder.
    std::atomic<LEVEL> m_level{ERROR}; ///< The most verbose level that is written.
    QMutex m_mutex;                    ///< Held while a line is built and written; nothing under it may log.

    /// Guards which file is open (m_date, m_file, m_dir), from choosing it until the line is in it, and what
    /// follows. Recursive because opening a file may itself have something to log.
    std::recursive_mutex m_rollover;
    /// openFile() is deleting files: the call made by the line about a failure must not prune again.
    bool m_pruning{false};

    // Names of daily files in m_youngPath made after m_youngLimit. A file does not grow older than the limit
    // before the limit moves, so its times are not asked for again on every line.
    QSet<QString> m_young;
    QString m_youngPath;
    QDate m_youngLimit;
};
