#pragma once

#include "services/UpdateChecker.h"
#include "services/WindowBackend.h"

#include <memory>

// The windows Narv opens itself: a break window on every screen, the water
// panel, About, Settings. The logic lives here; the windows themselves are made
// by the WindowBackend that the application installs at start-up.
namespace WindowController {
void setBackend(std::unique_ptr<WindowBackend> backend);
WindowBackend *backend();

void setup();
void showBreak();
void closeBreak();
void showAbout();
void showPrefView();
void showHistory();
void showWaterView();
void closeWaterView();
void toggleWaterView();

void setUpdateChecker(std::unique_ptr<UpdateChecker> checker);
UpdateChecker *updateChecker();
// The menu's "Check for Updates...".
void showUpdater();
} // namespace WindowController
