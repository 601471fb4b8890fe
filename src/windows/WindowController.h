#pragma once

#include <memory>

// The windows Narv opens itself: a break window on every screen, the water
// panel, About, Settings. The logic lives here; the windows themselves are made
// by a WindowBackend that the application installs at start-up.
class WindowBackend {
public:
    virtual ~WindowBackend() = default;
    // A break is near: backends that take a while to show their first window
    // get ready now.
    virtual void prepareBreak() {}
    virtual void showBreak() = 0;
    virtual void closeBreak() = 0;
    virtual void showAbout() = 0;
    virtual void showPrefView() = 0;
    virtual void showHistory() {}
    // The water panel; backends without one keep the defaults.
    virtual void showWaterView() {}
    virtual void closeWaterView() {}
    virtual bool isWaterViewVisible() const { return false; }
};

// Checks for a newer release; installed at start-up when the build has one.
class UpdateChecker {
public:
    virtual ~UpdateChecker() = default;
    // A check the user asked for: reports "up to date" and errors too.
    virtual void checkForUpdates() = 0;
};

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
