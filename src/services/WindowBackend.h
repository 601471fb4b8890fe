#pragma once

// Draws Narv's windows (WindowController decides when): the Qt Quick windows
// in this process or in the window process (platform/views), or a test's fake.
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
