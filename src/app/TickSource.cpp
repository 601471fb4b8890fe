#include "app/TickSource.h"

#include <QTimerEvent>

void TimerTickSource::start()
{
    // A coarse timer may drift by up to 5 % per tick; a 25-minute period would
    // then end more than a minute late.
    m_timer.start(1000, Qt::PreciseTimer, this);
}

void TimerTickSource::timerEvent(QTimerEvent *event)
{
    if (event->timerId() == m_timer.timerId())
        Q_EMIT tick();
    else
        TickSource::timerEvent(event);
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
