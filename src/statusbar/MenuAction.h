#pragma once

#include "statusbar/StatusBarController.h"

#include <QString>

#include <functional>
#include <memory>

// The desktop's way of writing a mail: a mail program, the portal, a mailto:
// link. One is picked when the user asks for it (see MenuAction::setMailService).
class MailComposer {
public:
    virtual ~MailComposer() = default;
    // Opens a draft for the user to finish and send. `attachment` is a local
    // file; empty for none.
    virtual void compose(const QString &recipient, const QString &subject, const QString &body,
                         const QString &attachment) = 0;
};

// The target of every menu command. Each handler takes the item that was chosen.
namespace MenuAction {
using Sender = const StatusBarController::MenuItem *;

// Pauses or resumes the work cycle.
void didClickPause(Sender sender);
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
