#include "AppDelegate.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "app/SystemEventController.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "statusbar/StatusBarController.h"
#include "windows/WindowController.h"

#include <QDir>

namespace {
// The water reminder's tally shows in the status menu, and an unlock on a new
// day starts its day afresh.
void connectWaterReminder()
{
    PrefWaterState *water = AppState::waterState();
    StatusBarController::setWaterSource({
        [water] { return water->enable(); },
        [water] { return water->finishedPrecent(); },
        [water] { return water->inWorkTime(); },
    });
    SystemEventController::setWaterUnlockHook({
        [water] { return water->enable(); },
        [water] { return water->isNewDay(); },
        [water] { water->reset(); },
        [water] { water->schedule(); },
    });
}
} // namespace

void AppDelegate::applicationDidFinishLaunching()
{
    // Said once, up front, rather than at the first change the user makes.
    PreferencesStore::instance().checkWritable();
    connectWaterReminder();

    // Runs before the status item exists; the start/stop item picks up the
    // state when the item is created below.
    AppState::setWorking(true);
    WindowController::setup();
    StatusBarController::item();
    SystemEventController::setup();
    LOG_INFO(QStringLiteral("sandbox home path: ") + QDir::homePath());
}

void AppDelegate::applicationWillTerminate()
{
}
