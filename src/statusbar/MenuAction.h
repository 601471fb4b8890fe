#pragma once

#include "services/MailComposer.h"
#include "statusbar/StatusBarController.h"

#include <QString>

#include <functional>
#include <memory>

// The target of every menu command. Each handler takes the item that was chosen.
namespace MenuAction {
using Sender = const StatusBarController::MenuItem *;

// Pauses or resumes the work cycle.
void didClickPause(Sender sender);
// "Pause for 30 minutes", "Pause for 1 hour", "Pause until tomorrow".
void didClickPauseFor30(Sender sender);
void didClickPauseFor60(Sender sender);
void didClickPauseUntilTomorrow(Sender sender);
void didClickWater(Sender sender);
void didClickSettings(Sender sender);
void didClickHistory(Sender sender);
void didClickUpdates(Sender sender);
// A draft to the feedback address with the program's facts and today's log.
void didClickFeedback(Sender sender);
void didClickAbout(Sender sender);
// Ends the event loop; the process exits with 0.
void didClickQuit(Sender sender);

// Asked for the mail service each time feedback is chosen; returning none means
// this session has no way to write mail, and feedback then does nothing.
void setMailService(std::function<std::unique_ptr<MailComposer>()> provider);

// The pre-filled mail: the request line, room to write, then the version,
// machine and system lines.
QString feedbackBody();
QString feedbackSubject();
} // namespace MenuAction
