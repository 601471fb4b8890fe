#pragma once

#include "services/InputActivitySource.h"
#include "services/ScreenLockSource.h"

#include <QObject>

#include <functional>
#include <memory>

// The water reminder's part of an unlock. Its settings object installs these
// when it exists; until then an unlock leaves the water reminder alone.
struct WaterUnlockHook {
    std::function<bool()> enable;
    std::function<bool()> isNewDay;
    std::function<void()> reset;
    std::function<void()> schedule;
};

// Connects the work cycle to the machine: screen lock and unlock, and mouse and
// modifier-key activity.
namespace SystemEventController {
// The stop after mouse idleness.
constexpr qint64 idleDelayMs = 300 * 1000;

// The sources are installed before setup(); without one that part is not watched.
void setScreenLockSource(std::unique_ptr<ScreenLockSource> source);
void setInputActivitySource(std::unique_ptr<InputActivitySource> source);
ScreenLockSource *screenLockSource();
InputActivitySource *inputActivitySource();

void setWaterUnlockHook(WaterUnlockHook hook);

// Starts listening to both sources and arms the first idle stop. Once, at launch.
void setup();
} // namespace SystemEventController

// The reactions to what the machine reports. Never instantiated.
class SystemEventActions {
public:
    SystemEventActions() = delete;

    // A watched input event (or the call from setup()): re-arms the idle stop
    // and restarts work stopped by idleness or a lock, unless the user paused.
    // Runs for every mouse motion, so it does a constant, small amount of work.
    static void onTrigger();
    // Screen locked: records the moment for the new-day greeting, and stops
    // the countdown and closes the break windows when restartTimerAfterAwake is on.
    static void didLockScreenShow();
    // Screen unlocked: the new-day greeting, the break count reset, the work
    // restart and the water reminder's new day.
    static void didLockScreenDismiss();
};
