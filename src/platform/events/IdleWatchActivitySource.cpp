#include "platform/events/IdleWatchActivitySource.h"

IdleWatchActivitySource::IdleWatchActivitySource(QObject *parent) : InputActivitySource(parent)
{
    m_pulse.setInterval(pulseMs);
    connect(&m_pulse, &QTimer::timeout, this, &InputActivitySource::activity);
}

void IdleWatchActivitySource::userBecameActive()
{
    m_pulse.start();
    Q_EMIT activity();
}

void IdleWatchActivitySource::userBecameIdle()
{
    m_pulse.stop();
    Q_EMIT activity();
}
