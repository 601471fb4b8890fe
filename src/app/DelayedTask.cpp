#include "app/DelayedTask.h"

#include "app/Clock.h"

#include <limits>

DelayedTask::DelayedTask(std::function<void()> body, QObject *parent)
    : QObject(parent), m_body(std::move(body))
{
    m_timer.setSingleShot(true);
    // The deadline is checked when the timer goes off, so a coarse timer would
    // only cost extra wake-ups; a precise one goes off once.
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, &DelayedTask::checkDeadline);
}

void DelayedTask::schedule(qint64 delayMs)
{
    const qint64 now = Clock::monotonicMs();
    m_deadline = now + qMax<qint64>(0, delayMs);
    m_pending = true;
    m_cancelled = false;
    if (!m_timer.isActive() || m_deadline < m_timerDue)
        arm(m_deadline - now);
}

void DelayedTask::cancel()
{
    m_cancelled = true;
    m_pending = false;
    m_timer.stop();
}

qint64 DelayedTask::remainingMs() const
{
    if (!m_pending)
        return 0;
    return qMax<qint64>(0, m_deadline - Clock::monotonicMs());
}

void DelayedTask::checkDeadline()
{
    if (!m_pending)
        return;
    const qint64 now = Clock::monotonicMs();
    if (now < m_deadline) {
        arm(m_deadline - now);
        return;
    }
    run();
}

void DelayedTask::fireNow()
{
    if (m_pending)
        run();
}

void DelayedTask::arm(qint64 delayMs)
{
    // QTimer takes an int; a longer delay is waited for in several legs.
    const qint64 leg = qMin<qint64>(delayMs, std::numeric_limits<int>::max());
    m_timerDue = Clock::monotonicMs() + leg;
    m_timer.start(int(leg));
}

void DelayedTask::run()
{
    m_pending = false;
    m_timer.stop();
    // The body may schedule this task again.
    if (m_body)
        m_body();
}
