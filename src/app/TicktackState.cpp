#include "app/TicktackState.h"

void TicktackState::setTimeString(const QString &value)
{
    m_timeString = value;
    Q_EMIT timeStringChanged();
}

void TicktackState::setTimesUp(bool value)
{
    m_timesUp = value;
    Q_EMIT timesUpChanged();
}
