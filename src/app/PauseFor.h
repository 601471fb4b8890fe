#pragma once

#include <QDateTime>

// A pause that ends by itself: the menu's "Pause for 30 minutes", "Pause for
// 1 hour" and "Pause until tomorrow". It is a manual pause with an end; at
// the end a full work period starts. Resuming by hand, or any other start of
// work, drops the end.
namespace PauseFor {
// Pauses now until `until` (a moment of Clock::now()).
void pauseUntil(const QDateTime &until);
// The end of the running pause; invalid when none runs.
QDateTime until();
// The start of tomorrow, for "Pause until tomorrow".
QDateTime tomorrow();
// Ends the pause now if its end has passed (tests step the clock and call it;
// the pause's own timer calls it when it goes off).
void checkEnd();
} // namespace PauseFor
