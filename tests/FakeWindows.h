#pragma once

// A test's window controller and the backend it draws with (WindowsOf), and
// the windows as a list of calls in the order they came (FakeWindows).

#include "windows/WindowController.h"

#include <QStringList>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

// Made together, as a member of the test: while it lives, the program's
// windows go to `windows`.
template <class Backend> struct WindowsOf {
    template <class... Args>
    explicit WindowsOf(Args &&...args)
        : windows(*new Backend(std::forward<Args>(args)...)),
          controller(std::unique_ptr<WindowBackend>(&windows))
    {
    }
    Backend &windows;
    WindowController controller;
};

class FakeWindows : public WindowBackend {
public:
    // For the whole of a test program's run: a new one in use from now on.
    static FakeWindows &install()
    {
        static std::optional<WindowsOf<FakeWindows>> installed;
        installed.reset();
        return installed.emplace().windows;
    }

    int count(const char *call) const { return int(calls.count(QString::fromLatin1(call))); }

    void showBreak() override { record("showBreak"); }
    void closeBreak() override { record("closeBreak"); }
    void showAbout() override { record("showAbout"); }
    void showPrefView() override { record("showPrefView"); }
    void showWaterView() override { record("showWaterView"); }
    void closeWaterView() override { record("closeWaterView"); }

    QStringList calls;
    std::function<void(const QString &call)> onCall; // runs as each call is recorded

private:
    void record(const char *call)
    {
        calls.append(QString::fromLatin1(call));
        if (onCall)
            onCall(calls.last());
    }
};
