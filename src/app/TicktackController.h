#pragma once

#include <QString>
#include <QtGlobal>

class TicktackState;
class TickSource;

// Seconds as the status bar and the break screen show them: "mm:ss", with the
// hours (when there are any) put in front without a separator, so 3725 reads
// "0102:05". Zero or less reads "00:00".
QString timeString(qint64 seconds);

// The one countdown of the program. Work and break share it: starting either
// stops the other. A countdown does not end itself when it reaches zero; it goes
// on ticking (showing "00:00") until the next phase replaces it.
namespace TicktackController {
void work(qint64 seconds);
// The break countdown. (`break` is a C++ keyword, hence the name.)
void startBreak(qint64 seconds);
// Starts a countdown of `seconds` on `state`; the common body of work() and startBreak().
void ticktack(qint64 seconds, TicktackState *state);
// Cancels the running countdown, if any. The states keep their last values.
void stop();
bool isRunning();
// Seconds left on the countdown that publishes to `state`; -1 when that one is
// not running.
qint64 remaining(const TicktackState *state);

// The shared tick source, a one-second precise timer unless replaced.
TickSource *timer();
// Replaces the tick source (tests step a ManualTickSource). Stops any countdown.
void setTimer(TickSource *source);
} // namespace TicktackController
