#pragma once

#include <memory>

class BusySource;

// "No break during a call or full-screen work" (pref.defer.when.busy). A
// break that falls due while a source says the user is busy is owed, not
// dropped: the work countdown, which goes on ticking past zero, asks again
// each second, and the break starts as soon as nothing keeps it, or after
// maxWaitSeconds. The log says why it waited.
namespace BreakDeferral {
inline constexpr int maxWaitSeconds = 30 * 60;

void addSource(std::unique_ptr<BusySource> source);
// Asked as the work countdown runs out and on each tick after: whether the
// break waits now. Always false with the setting off.
bool holds();
// Forgets the sources (tests).
void clearSources();
} // namespace BreakDeferral
