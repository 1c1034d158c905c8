#pragma once

#include <QtCore/QDateTime>
#include <QtCore/QString>

#include <atomic>

/// @brief The simulator's clock: the system clock, or a manual one that only step() advances.
class SimClock
{
public:
    /// @p start in ms since 1970 UTC: the first time of a manual clock; 0: now.
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
    /// Advances the clock, a manual one or not.
    void step(qint64 ms) { m_stepped += ms; }

    /// A date as in fax entries: local time without a zone; empty for 0.
    static QString text(qint64 ms)
    {
        return ms == 0 ? QString()
                       : QDateTime::fromMSecsSinceEpoch(ms).toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    }
    /// A date in UTC, as in "schedule_all_at"; empty for 0.
    static QString utcText(qint64 ms)
    {
        return ms == 0 ? QString()
                       : QDateTime::fromMSecsSinceEpoch(ms, Qt::UTC)
                             .toString(QStringLiteral("yyyy-MM-ddThh:mm:ss"));
    }
    /// Parses exactly "yyyy-MM-ddThh:mm:ss" as UTC; 0 for any other text.
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
