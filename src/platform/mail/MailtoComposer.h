#pragma once

#include "statusbar/MenuAction.h"

#include <QUrl>

// The last resort: a mailto: link, handed to xdg-open for whatever the
// desktop opens those with. A link cannot carry a file, so the log stays
// behind (its path goes to the log).
class MailtoComposer : public MailComposer {
public:
    explicit MailtoComposer(const QString &xdgOpen) : m_xdgOpen(xdgOpen) {}

    static QUrl url(const QString &recipient, const QString &subject, const QString &body);

    void compose(const QString &recipient, const QString &subject, const QString &body,
                 const QString &attachment) override;

private:
    QString m_xdgOpen;
};
