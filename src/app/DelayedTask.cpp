#include "app/DelayedTask.h"

DelayedTask::DelayedTask(std::function<void()> body, QObject *parent)
    : QObject(parent), m_body(std::move(body))
{
    m_timer.setSingleShot(true);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (!m_cancelled && m_body)
            m_body();
    });
}

void DelayedTask::schedule(int delayMs)
{
    m_cancelled = false;
    m_timer.start(delayMs);
}

void DelayedTask::cancel()
{
    m_cancelled = true;
    m_timer.stop();
}

void DelayedTask::fireNow()
{
    if (!m_timer.isActive())
        return;
    m_timer.stop();
    if (!m_cancelled && m_body)
        m_body();
}
