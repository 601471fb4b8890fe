#pragma once

#include <memory>

class QWindow;

// Window-manager hints Qt has no flag for. Break windows must show on every
// virtual desktop and stay out of the taskbar and pager; Qt's flags already
// cover frameless and stays-on-top.
class WindowHints {
public:
    virtual ~WindowHints() = default;

    // Call before every show: window managers drop these hints when a window
    // is withdrawn (hidden), so they have to be set again each time.
    virtual void setOnAllDesktops(QWindow *window) = 0;

    // Whether the window opacity can be animated. Wayland has no window
    // opacity (Qt warns on every attempt); on X11 it shows once a compositor
    // runs and costs nothing without one.
    virtual bool canFade() const = 0;

    // The hints for the session the application runs in: X11 (xcb) or none
    // (Wayland compositors decide this themselves; offscreen has no desktops).
    static std::unique_ptr<WindowHints> forSession();
};

// Does nothing; used where the session offers no such hints.
class NoWindowHints : public WindowHints {
public:
    void setOnAllDesktops(QWindow *) override {}
    bool canFade() const override { return false; }
};
