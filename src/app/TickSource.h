#pragma once

#include <QBasicTimer>
#include <QObject>

// The one-second beat of the countdown. The real one is a precise timer on the
// main thread; tests use ManualTickSource and step it.
class TickSource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Starts (or restarts) ticking; the first tick comes one interval after this call.
    virtual void start() = 0;
    virtual void stop() = 0;
    virtual bool isActive() const = 0;
    virtual double intervalSeconds() const { return 1.0; }

    // What each tick runs: one function, given `context`, called straight
    // rather than through a signal (a tick runs every second of the
    // program's life, and a signal's delivery reads a handful of objects
    // spread over the heap). Null for none.
    using Listener = void (*)(void *context);
    void setListener(Listener listener, void *context)
    {
        m_listener = listener;
        m_context = context;
    }

protected:
    void deliver()
    {
        if (m_listener)
            m_listener(m_context);
    }

private:
    Listener m_listener = nullptr;
    void *m_context = nullptr;
};

// A precise one-second timer of this object's own: its tick is delivered
// straight from the timer event, without a QTimer and its timeout signal in
// between.
class TimerTickSource : public TickSource {
    Q_OBJECT
public:
    using TickSource::TickSource;
    void start() override;
    void stop() override;
    bool isActive() const override { return m_timer.isActive(); }

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    QBasicTimer m_timer;
};

class ManualTickSource : public TickSource {
    Q_OBJECT
public:
    using TickSource::TickSource;
    void start() override { m_active = true; }
    void stop() override { m_active = false; }
    bool isActive() const override { return m_active; }
    // Delivers n ticks while active.
    void advance(int n = 1);

private:
    bool m_active = false;
};
