#include "app/TickSource.h"

TimerTickSource::TimerTickSource(QObject *parent) : TickSource(parent)
{
    m_timer.setInterval(1000);
    // A coarse timer may drift by up to 5 % per tick; a 25-minute period would
    // then end more than a minute late.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &TickSource::tick);
}

void TimerTickSource::start()
{
    m_timer.start();
}

void TimerTickSource::stop()
{
    m_timer.stop();
}

void ManualTickSource::advance(int n)
{
    for (int i = 0; i < n && m_active; ++i)
        Q_EMIT tick();
}
