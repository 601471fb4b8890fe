#include "app/PauseFor.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/CycleEvents.h"
#include "app/DelayedTask.h"
#include "app/Log.h"

#include <algorithm>

namespace {
struct Pause {
    QDateTime until;
    DelayedTask *task = nullptr;
};

Pause &current()
{
    static Pause p;
    if (!p.task) {
        p.task = new DelayedTask(PauseFor::checkEnd, CycleEvents::instance());
        // Any start of work ends it: a resume by hand, a new work time.
        QObject::connect(CycleEvents::instance(), &CycleEvents::workingAssigned,
                         CycleEvents::instance(), [](bool working) {
                             if (working && p.until.isValid()) {
                                 p.until = QDateTime();
                                 p.task->cancel();
                             }
                         });
    }
    return p;
}
} // namespace

void PauseFor::pauseUntil(const QDateTime &until)
{
    Pause &p = current();
    // Set first: the status item reads it as the pause is assigned.
    p.until = until;
    LOG_INFO(QStringLiteral("paused until %1").arg(until.toString(Qt::ISODate)));
    AppState::setManualPause(true);
    p.task->schedule(std::max<qint64>(Clock::now().msecsTo(until), 0));
}

QDateTime PauseFor::until()
{
    return current().until;
}

QDateTime PauseFor::tomorrow()
{
    return QDateTime(Clock::now().date().addDays(1), QTime(0, 0));
}

void PauseFor::checkEnd()
{
    Pause &p = current();
    if (!p.until.isValid())
        return;
    const qint64 left = Clock::now().msecsTo(p.until);
    if (left > 0) {
        // The wall clock is behind the timer's (it was set back): wait the rest.
        p.task->schedule(left);
        return;
    }
    LOG_INFO(QStringLiteral("the pause is over"));
    AppState::setManualPause(false);
}
