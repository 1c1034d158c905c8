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

// Windows' headers define these as macros, which would replace the enumerators. Include Windows' headers
// first.
#undef NONE
#undef ERROR
#undef WARNING
#undef INFO
#undef DEBUG

/**
 * The diagnostic log of the process: text lines in one file per day.
 *
 * Every class of the library logs through Logger::inst(). The file of a day is named
 * QuendraClientLog-MM-dd-yyyy.txt and is in the user's application-data folder under "Quendra Client
 * Software/Logs" unless setLocation() changes that. Files older than 30 days are deleted, and when a day's
 * file is opened, the folder is pruned to 30 other files, whatever their names.
 *
 * log(), setLevel() and level() are thread-safe: no line is lost and lines do not interleave, not even at
 * midnight. No function reports an error; a line that cannot be written is dropped, and the next one tries to
 * open the file again.
 */
class QDCORE_EXPORT Logger
{
public:
    /// The severity of a message. A message is written if its level is not above the logger's.
    enum LEVEL : qint32 {
        NONE = 0,    ///< As the logger's level: nothing is written.
        ERROR = 1,   ///< A failure. The initial level of the logger.
        WARNING = 2, ///< Something unexpected that was handled.
        INFO = 3,    ///< Actions of the logger itself.
        DEBUG = 4    ///< Everything, requests and whole replies included.
    };

    /// The single instance, created on first use and destroyed at exit.
    static Logger& inst();

    /// Writes one line. @p file and @p line are the source location; only the file's name is written.
    void log(LEVEL level, const QString& message, const char* file, int line);

    /// Sets the most verbose level that is written.
    void setLevel(LEVEL level);
    /// The most verbose level that is written: ERROR until it is set.
    LEVEL level() const { return m_level.load(std::memory_order_relaxed); }

    /// Moves the log to another folder; the next line opens the day's file there. Does nothing if the path,
    /// compared as text, is the current one.
    void setLocation(const QDir& dir);

    /// The log folder. For the thread that calls setLocation().
    const QDir& location() const { return m_dir; }

    /// The full path of the open log file, empty when none is open.
    QString currentFile();

    /// Closes the log file, for instance so that it can be copied. The next line opens it again.
    void releaseLogFile();

    /// Deletes the daily files created on or before today plus @p days, so -30 keeps the last 30 days; never
    /// the open one. Failures are ignored. Called automatically for each line that passes the level.
    void removeOldLogs(int days);

protected:
    /// @p clock returns local time; the system's by default.
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
    QMutex m_mutex;                    ///< Held while a line is built and written: logging then deadlocks.

    /// Guards m_date, m_file, m_dir and the members below, from the choice of the file until the line is
    /// written. Recursive because opening a file may log.
    std::recursive_mutex m_rollover;
    /// openFile() is deleting files: a failure logs, which calls openFile() again, and must not prune again.
    bool m_pruning{false};

    // Cache of the names of daily files in m_youngPath created after m_youngLimit: until the limit changes
    // they need not be deleted, so their times are not read for every line.
    QSet<QString> m_young;
    QString m_youngPath;
    QDate m_youngLimit;
};
