#pragma once
// Measures how long the main thread goes without turning its event loop: a 1 ms timer whose
// longest gap between two ticks is the longest stall a user could feel.
#include <QElapsedTimer>
#include <QTimer>
#include <algorithm>

class MainThreadProbe
{
public:
    MainThreadProbe()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(1);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            m_longestGapMs = std::max(m_longestGapMs, double(m_tick.nsecsElapsed()) / 1e6);
            m_tick.restart();
        });
    }

    void start()
    {
        m_longestGapMs = 0;
        m_tick.start();
        m_timer.start();
    }
    void stop() { m_timer.stop(); }
    double longestGapMs() const { return m_longestGapMs; }

private:
    QTimer m_timer;
    QElapsedTimer m_tick;
    double m_longestGapMs = 0;
};
