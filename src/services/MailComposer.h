#pragma once

#include <QString>

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
