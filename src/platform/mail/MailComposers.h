#pragma once

#include "statusbar/MenuAction.h"

#include <QString>

#include <memory>

// The ways of writing the feedback mail on Linux, one picked each time by what
// the session offers:
//   sandboxed (Flatpak, Snap)  the Email portal, which can take the log file
//   xdg-email on PATH          the user's mail program, the log attached
//   otherwise                  a mailto: link opened with xdg-open (no attachment)
namespace MailComposers {
enum class Kind { none, portal, xdgEmail, mailto };

struct Session {
    bool sandboxed = false;
    bool portalOnBus = false;
    QString xdgEmail; // path of xdg-email, empty when not found
    QString xdgOpen;  // path of xdg-open, empty when not found
};

// What this process sees now.
Session currentSession();
Kind choose(const Session &session);
// The composer for the session; none when it offers no way to write mail.
std::unique_ptr<MailComposer> forSession(const Session &session);

// Makes the feedback command use forSession(currentSession()).
void install();
} // namespace MailComposers
