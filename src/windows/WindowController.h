#pragma once

#include "services/UpdateChecker.h"
#include "services/WindowBackend.h"

#include <memory>

// The windows Narv opens itself: a break window on every screen, the water
// panel, About, Settings. The logic lives here; the windows themselves are
// drawn by the backend the controller is made with.
//
// The program's entry (or a test) makes one controller and keeps it for as
// long as windows may be wanted; while it lives, the static functions below,
// which the menu, the views and the cycle call, go to it (a second one made
// meanwhile takes over until it goes, in scope order). Without one, breaks
// run as state only.
class WindowController {
public:
    explicit WindowController(std::unique_ptr<WindowBackend> backend);
    ~WindowController();
    WindowController(const WindowController &) = delete;
    WindowController &operator=(const WindowController &) = delete;

    // The backend of the controller in use, or nullptr.
    static WindowBackend *backend();

    static void setup();
    static void showBreak();
    static void closeBreak();
    static void showAbout();
    static void showPrefView();
    static void showHistory();
    static void showWaterView();
    static void closeWaterView();
    static void toggleWaterView();

    static void setUpdateChecker(std::unique_ptr<UpdateChecker> checker);
    static UpdateChecker *updateChecker();
    // The menu's "Check for Updates...".
    static void showUpdater();

private:
    std::unique_ptr<WindowBackend> m_backend;
    WindowController *m_previous;
};
