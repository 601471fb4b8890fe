#pragma once

#include "statusbar/MenuAction.h"

#include <QDBusConnection>

// The Email portal (org.freedesktop.portal.Email), for sandboxed installs: the
// portal gets the log file as an open file descriptor, which the mail program
// outside the sandbox can read.
class PortalEmailComposer : public MailComposer {
public:
    static constexpr const char *service = "org.freedesktop.portal.Desktop";
    static constexpr const char *path = "/org/freedesktop/portal/desktop";
    static constexpr const char *interface = "org.freedesktop.portal.Email";

    explicit PortalEmailComposer(const QDBusConnection &connection) : m_connection(connection) {}

    void compose(const QString &recipient, const QString &subject, const QString &body,
                 const QString &attachment) override;

private:
    QDBusConnection m_connection;
};
