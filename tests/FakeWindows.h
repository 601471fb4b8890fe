#pragma once

// The windows as a list of calls, in the order they came. A test installs one
// as the window backend and reads `calls` (or counts one kind of call).

#include "windows/WindowController.h"

#include <QStringList>

#include <functional>
#include <memory>

class FakeWindows : public WindowBackend {
public:
    // Makes a new one the window backend; it lives until the next is set.
    static FakeWindows &install()
    {
        auto windows = std::make_unique<FakeWindows>();
        FakeWindows &installed = *windows;
        WindowController::setBackend(std::move(windows));
        return installed;
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
