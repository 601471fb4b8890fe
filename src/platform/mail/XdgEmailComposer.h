#pragma once

#include "statusbar/MenuAction.h"

// Hands the draft to xdg-email, which opens the user's mail program with the
// log file attached. Runs detached: the mail program outlives the menu click.
class XdgEmailComposer : public MailComposer {
public:
    explicit XdgEmailComposer(const QString &program) : m_program(program) {}

    // The arguments xdg-email gets; a missing attachment file is left out.
    static QStringList arguments(const QString &recipient, const QString &subject,
                                 const QString &body, const QString &attachment);

    void compose(const QString &recipient, const QString &subject, const QString &body,
                 const QString &attachment) override;

private:
    QString m_program;
};
