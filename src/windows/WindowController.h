#pragma once

#include <memory>

// The windows Narv opens itself: a break window on every screen, the water
// panel, About, Settings. The logic lives here; the windows themselves are made
// by a WindowBackend that the application installs at start-up.
class WindowBackend {
public:
    virtual ~WindowBackend() = default;
    virtual void showBreak() = 0;
    virtual void closeBreak() = 0;
    virtual void showAbout() = 0;
    virtual void showPrefView() = 0;
};

namespace WindowController {
void setBackend(std::unique_ptr<WindowBackend> backend);
WindowBackend *backend();

void setup();
void showBreak();
void closeBreak();
void showAbout();
void showPrefView();
} // namespace WindowController
