#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <atomic>

/// @brief The simulator's time: the machine's own, or one that stands still until it is stepped.
class SimClock
{
public:
    /// @p start in ms since 1970 UTC: where a time that stands still begins; 0: now.
    explicit SimClock(bool manual, qint64 start = 0)
        : m_manual(manual)
        , m_base(start != 0 ? start : QDateTime::currentMSecsSinceEpoch())
    {}

    /// Milliseconds since 1970 UTC.
    qint64 now() const
    {
        return (m_manual ? m_base.load() : QDateTime::currentMSecsSinceEpoch()) + m_stepped;
    }
    /// Milliseconds since the simulator was started.
    qint64 uptime() const { return now() - m_base; }
    /// Moves the time forward; also possible while it runs.
    void step(qint64 ms) { m_stepped += ms; }

    /// A date as fax entries carry it: local time without a zone; empty for 0.
    static QString text(qint64 ms)
    {
        return ms == 0 ? QString()
                       : QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    }
    /// A date in UTC, as "schedule_all_at" carries it; empty for 0.
    static QString utcText(qint64 ms)
    {
        return ms == 0 ? QString()
                       : QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC)
                             .toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    }
    /// Reads exactly "yyyy-MM-ddThh:mm:ss" as UTC; 0 if it is no such date.
    static qint64 fromUtcText(const QString& text)
    {
        QDateTime time = QDateTime::fromString(text, QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
        time.setTimeSpec(Qt::UTC);
        return time.isValid() && utcText(time.toMSecsSinceEpoch()) == text ? time.toMSecsSinceEpoch() : 0;
    }

private:
    const bool m_manual;
    std::atomic<qint64> m_base;
    std::atomic<qint64> m_stepped{0};
};
