#include "app/AppDelegate.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "app/SystemEventController.h"
#include "statusbar/StatusBarController.h"
#include "windows/WindowController.h"

#include <QDir>

void AppDelegate::applicationDidFinishLaunching()
{
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
