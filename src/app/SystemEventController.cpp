#include "app/SystemEventController.h"

#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/DelayedTask.h"
#include "app/Log.h"
#include "app/PauseFor.h"
#include "settings/PrefState.h"
#include "settings/PromptState.h"

namespace {

std::unique_ptr<ScreenLockSource> &lockSlot()
{
    static std::unique_ptr<ScreenLockSource> source;
    return source;
}

std::unique_ptr<InputActivitySource> &inputSlot()
{
    static std::unique_ptr<InputActivitySource> source;
    return source;
}

WaterUnlockHook &waterHook()
{
    static WaterUnlockHook hook;
    return hook;
}

// stopTimerAfterMouseStop as last read. onTrigger() runs for every mouse
// motion, and reading the setting goes through the settings file's parser, so
// the value is kept here and refreshed whenever the setting changes (by us or
// by an edit of the file).
class IdleSetting {
public:
    IdleSetting()
    {
        PrefState *pref = AppState::prefState();
        m_on = pref->stopTimerAfterMouseStop();
        QObject::connect(pref, &PrefState::stopTimerAfterMouseStopChanged, pref,
                         [this, pref] { m_on = pref->stopTimerAfterMouseStop(); });
    }
    bool on() const { return m_on; }

private:
    bool m_on = true;
};

bool stopTimerAfterMouseStop()
{
    static IdleSetting setting;
    return setting.on();
}

void idleStop()
{
    LOG_INFO(QStringLiteral("no mouse activity for %1 seconds, work stops")
                 .arg(SystemEventController::idleDelayMs / 1000));
    // Also when the cycle is stopped already: assigning false again is harmless.
    AppState::setWorking(false);
}

} // namespace

void SystemEventController::setScreenLockSource(std::unique_ptr<ScreenLockSource> source)
{
    lockSlot() = std::move(source);
}

void SystemEventController::setInputActivitySource(std::unique_ptr<InputActivitySource> source)
{
    inputSlot() = std::move(source);
}

ScreenLockSource *SystemEventController::screenLockSource()
{
    return lockSlot().get();
}

InputActivitySource *SystemEventController::inputActivitySource()
{
    return inputSlot().get();
}

void SystemEventController::setWaterUnlockHook(WaterUnlockHook hook)
{
    waterHook() = std::move(hook);
}

void SystemEventController::setup()
{
    if (ScreenLockSource *source = lockSlot().get()) {
        QObject::connect(source, &ScreenLockSource::locked, source,
                         &SystemEventActions::didLockScreenShow);
        QObject::connect(source, &ScreenLockSource::unlocked, source,
                         &SystemEventActions::didLockScreenDismiss);
        source->start();
    } else {
        LOG_NOTICE(QStringLiteral("screen lock is not watched"));
    }

    // Whether or not activity can be seen, the first idle stop is armed: without
    // a source the cycle stops after five minutes and a menu action or an
    // unlock restarts it.
    if (InputActivitySource *source = inputSlot().get()) {
        QObject::connect(source, &InputActivitySource::activity, source,
                         &SystemEventActions::onTrigger);
        if (!source->start())
            LOG_NOTICE(QStringLiteral("mouse activity is not watched"));
    } else {
        LOG_NOTICE(QStringLiteral("mouse activity is not watched"));
    }

    SystemEventActions::onTrigger();
}

void SystemEventActions::onTrigger()
{
    if (!stopTimerAfterMouseStop())
        return;

    // One task for the life of the process. Scheduling it again replaces the
    // pending stop: the deadline moves, nothing is allocated and the timer is
    // not touched.
    DelayedTask *item = AppState::mouseMoveEventItem();
    if (!item) {
        item = new DelayedTask(idleStop);
        AppState::setMouseMoveEventItem(item);
    }

    if (!AppState::manualPause() && !AppState::working()) {
        LOG_INFO(QStringLiteral("mouse activity, work starts again"));
        AppState::setWorking(true);
    }

    item->schedule(SystemEventController::idleDelayMs);
}

void SystemEventActions::didLockScreenShow()
{
    LOG_INFO(QStringLiteral("screen locked"));
    PrefState *pref = AppState::prefState();
    if (pref->showNewDayTip())
        pref->updateWeakupTimestamp();
    if (pref->restartTimerAfterAwake()) {
        AppState::setWorking(false);
        Q_EMIT CycleEvents::instance()->breakEnded();
    }
}

void SystemEventActions::didLockScreenDismiss()
{
    LOG_INFO(QStringLiteral("screen unlocked"));
    // A pause for a while runs on the monotonic clock, which stands still in
    // suspend; most desktops lock before it, so the wall clock is asked here.
    PauseFor::checkEnd();
    PrefState *pref = AppState::prefState();
    PromptState *prompt = AppState::promptState();

    bool newDay = false;
    if (pref->showNewDayTip()) {
        newDay = pref->isNewDay();
        if (newDay)
            prompt->showNewDay();
        // On every unlock, new day or not: an unlock starts a new round of breaks.
        prompt->resetShortBreakTimes();
    }

    // On a new day the greeting's end starts work.
    if (!newDay && pref->restartTimerAfterAwake() && !AppState::manualPause())
        AppState::setWorking(true);

    // The water reminder's new day does not depend on the greeting.
    const WaterUnlockHook &water = waterHook();
    if (water.enable && water.isNewDay && water.enable() && water.isNewDay()) {
        Q_EMIT CycleEvents::instance()->waterDayRestarted();
        if (water.reset)
            water.reset();
        if (water.schedule)
            water.schedule();
    }
}
