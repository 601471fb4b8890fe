#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

// A cancellable piece of work that runs once after a delay on the main thread.
// Cancelling keeps the object; it simply never runs.
//
// The delay is kept as a deadline on Clock::monotonicMs(). Scheduling again
// only moves the deadline: the timer is left alone unless the new deadline is
// earlier than the one it is set for, and when it goes off before the deadline
// it waits for the rest. So a task that is scheduled again hundreds of times a
// second (the mouse-idle stop) costs a clock read and a store per call.
class DelayedTask : public QObject {
    Q_OBJECT
public:
    DelayedTask(std::function<void()> body, QObject *parent = nullptr);

    // Runs the body once, delayMs from now, unless it is cancelled or
    // scheduled again first.
    void schedule(qint64 delayMs);
    void cancel();
    bool isCancelled() const { return m_cancelled; }
    bool isPending() const { return m_pending; }
    // Milliseconds left until the body runs; 0 when it is not pending.
    qint64 remainingMs() const;
    // What the timer does when it goes off: runs the body if the deadline has
    // passed, else waits for the rest. Tests that step Clock::monotonicMs()
    // call it instead of waiting.
    void checkDeadline();
    // Runs the body now if the task is still pending, whatever the deadline.
    void fireNow();

private:
    void arm(qint64 delayMs);
    void run();

    std::function<void()> m_body;
    QTimer m_timer;
    qint64 m_deadline = 0; // ms on Clock::monotonicMs()
    qint64 m_timerDue = 0; // ms on Clock::monotonicMs(), when m_timer goes off
    bool m_pending = false;
    bool m_cancelled = false;
};
