#pragma once

// Measures how long the event loop is blocked.

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

/// Runs an event loop and measures the longest time between two of its turns, in milliseconds, one of which
/// is due to the timer.
class GapLoop
{
public:
    GapLoop()
    {
        QObject::connect(&m_timer, &QTimer::timeout, [this] { look(); });
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.start(1);
        m_clock.start();
    }

    /// Calls @p start, and runs until quit().
    template <typename Start>
    double run(Start start)
    {
        m_clock.restart();
        start();
        look();
        if (!m_isOver)
            m_loop.exec();
        look();
        return m_longest;
    }
    void quit()
    {
        m_isOver = true;
        m_loop.quit();
    }

private:
    void look() { m_longest = qMax(m_longest, double(m_clock.nsecsElapsed()) / 1e6), m_clock.restart(); }

    QEventLoop m_loop;
    QTimer m_timer;
    QElapsedTimer m_clock;
    double m_longest{0};
    bool m_isOver{false};
};
