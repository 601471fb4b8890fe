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

Q_SIGNALS:
    void tick();
};

// A precise one-second timer of this object's own.
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
