#pragma once

#include "statusbar/MenuAction.h"

#include <QUrl>

// The last resort: a mailto: link for whatever handles those. A link cannot
// carry a file, so the log stays behind (its path goes to the log).
class MailtoComposer : public MailComposer {
public:
    static QUrl url(const QString &recipient, const QString &subject, const QString &body);

    void compose(const QString &recipient, const QString &subject, const QString &body,
                 const QString &attachment) override;
};
