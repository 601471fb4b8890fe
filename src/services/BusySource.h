#pragma once

#include <QString>

// Whether the user is in the middle of something a break should not land in:
// a call or a presentation that keeps the screen awake, a full-screen window.
// Asked only while a break is owed, once a second at most.
class BusySource {
public:
    virtual ~BusySource() = default;
    // Why a break should wait now ("the focused window is full screen"); empty
    // when nothing keeps it.
    virtual QString busyReason() = 0;
};
