#include "app/TicktackController.h"

#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/Log.h"
#include "app/TickSource.h"
#include "app/TicktackState.h"

#include <QPointer>

#include <algorithm>
#include <limits>
#include <memory>

namespace {
// Minutes and seconds as "%02d" writes them (0 to 59), without QString::arg:
// this runs every second of the program's life.
void appendTwoDigits(QString &text, qint64 value)
{
    text.append(QChar(u'0' + int(value / 10)));
    text.append(QChar(u'0' + int(value % 10)));
}
} // namespace

QString timeString(qint64 seconds)
{
    if (seconds <= 0)
        return QStringLiteral("00:00");
    const qint64 h = seconds / 3600;
    const qint64 m = (seconds % 3600) / 60;
    const qint64 s = seconds % 60;
    QString text;
    text.reserve(8);
    if (h > 0) {
        if (h < 10)
            text.append(u'0');
        text.append(QString::number(h));
    }
    appendTwoDigits(text, m);
    text.append(u':');
    appendTwoDigits(text, s);
    return text;
}

namespace {

// The running countdown: the remaining seconds and where they are published.
struct Countdown {
    qint64 seconds = 0;   // length it started with
    qint64 remaining = 0; // seconds, may go below zero after expiry
    QPointer<TicktackState> state;
    QMetaObject::Connection connection;
    quint64 generation = 0; // tells a countdown from the one that replaced it
};

struct Controller {
    TickSource *timer = nullptr;
    std::unique_ptr<TickSource> ownTimer;
    std::unique_ptr<Countdown> cancellable;
    quint64 generations = 0;
};

Controller &controller()
{
    static Controller c;
    return c;
}

void onTick(Countdown *countdown)
{
    if (countdown->remaining == std::numeric_limits<qint64>::min())
        qFatal("ticktack counter overflow");
    // Observers run inside the setters below and may replace (and delete) this
    // countdown, so everything needed afterwards is copied first.
    const qint64 remaining = --countdown->remaining;
    const qint64 seconds = countdown->seconds;
    const quint64 generation = countdown->generation;
    QPointer<TicktackState> state = countdown->state;
    if (!state)
        return;
    state->setTimeString(timeString(remaining));
    if (!state || state->timesUp() || remaining > 0)
        return;
    if (!controller().cancellable || controller().cancellable->generation != generation)
        return;
    logger().log(LogLevel::Info, QStringLiteral("ticktack timer timesup for %1").arg(seconds), {},
                 LogSource{"TicktackController", "ticktack(with:ticktack:)", __LINE__});
    state->setTimesUp(true);
}

// Drops the running countdown; true when there was one.
bool cancelRunning()
{
    auto &c = controller();
    if (!c.cancellable)
        return false;
    QObject::disconnect(c.cancellable->connection);
    c.cancellable.reset();
    return true;
}

} // namespace

TickSource *TicktackController::timer()
{
    auto &c = controller();
    if (!c.timer) {
        c.ownTimer = std::make_unique<TimerTickSource>();
        c.timer = c.ownTimer.get();
    }
    return c.timer;
}

void TicktackController::setTimer(TickSource *source)
{
    auto &c = controller();
    cancelRunning();
    if (c.timer)
        c.timer->stop();
    c.timer = source;
    if (source != c.ownTimer.get())
        c.ownTimer.reset();
}

void TicktackController::work(qint64 seconds)
{
    stop();
    ticktack(seconds, AppState::workState());
}

void TicktackController::startBreak(qint64 seconds)
{
    stop();
    ticktack(seconds, AppState::breakState());
}

void TicktackController::ticktack(qint64 seconds, TicktackState *state)
{
    auto countdown = std::make_unique<Countdown>();
    countdown->seconds = seconds;
    countdown->remaining = seconds;
    countdown->state = state;
    countdown->generation = ++controller().generations;
    state->setTimesUp(false);
    state->setTimeString(timeString(seconds));
    logger().log(LogLevel::Info, QStringLiteral("ticktack timer start %1").arg(seconds), {},
                 LogSource{"TicktackController", "ticktack(with:ticktack:)", __LINE__});

    auto &c = controller();
    TickSource *source = timer();
    if (c.cancellable)
        QObject::disconnect(c.cancellable->connection);
    Countdown *raw = countdown.get();
    countdown->connection =
        QObject::connect(source, &TickSource::tick, source, [raw] { onTick(raw); });
    c.cancellable = std::move(countdown);
    // Restarting the source gives the new countdown its first tick one second from now.
    source->start();
    Q_EMIT CycleEvents::instance()->changed();
}

void TicktackController::stop()
{
    auto &c = controller();
    if (cancelRunning() && c.timer)
        c.timer->stop();
    const double interval = c.timer ? c.timer->intervalSeconds() : 1.0;
    logger().log(LogLevel::Info,
                 QStringLiteral("ticktack timer stoped %1").arg(QString::number(interval, 'f', 1)),
                 {}, LogSource{"TicktackController", "stop()", __LINE__});
    Q_EMIT CycleEvents::instance()->changed();
}

bool TicktackController::isRunning()
{
    return controller().cancellable != nullptr;
}

qint64 TicktackController::remaining(const TicktackState *state)
{
    const auto &running = controller().cancellable;
    if (!running || !state || running->state != state)
        return -1;
    return std::max<qint64>(running->remaining, 0);
}
