#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

// A cancellable piece of work that runs once after a delay on the main thread.
// Cancelling keeps the object; it simply never runs.
class DelayedTask : public QObject {
    Q_OBJECT
public:
    DelayedTask(std::function<void()> body, QObject *parent = nullptr);

    void schedule(int delayMs);
    void cancel();
    bool isCancelled() const { return m_cancelled; }
    bool isPending() const { return m_timer.isActive(); }
    // Runs the body now if the task is still pending (used by tests that step time).
    void fireNow();

private:
    std::function<void()> m_body;
    QTimer m_timer;
    bool m_cancelled = false;
};
