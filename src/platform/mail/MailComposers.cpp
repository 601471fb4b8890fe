#include "MailComposers.h"

#include "MailtoComposer.h"
#include "PortalEmailComposer.h"
#include "XdgEmailComposer.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QFile>
#include <QStandardPaths>

MailComposers::Session MailComposers::currentSession()
{
    Session session;
    session.sandboxed =
        QFile::exists(QStringLiteral("/.flatpak-info")) || qEnvironmentVariableIsSet("SNAP");
    if (session.sandboxed) {
        QDBusConnectionInterface *bus = QDBusConnection::sessionBus().interface();
        const QString portal = QString::fromLatin1(PortalEmailComposer::service);
        session.portalOnBus = bus && (bus->isServiceRegistered(portal).value() ||
                                      bus->activatableServiceNames().value().contains(portal));
    }
    session.xdgEmail = QStandardPaths::findExecutable(QStringLiteral("xdg-email"));
    session.xdgOpen = QStandardPaths::findExecutable(QStringLiteral("xdg-open"));
    return session;
}

MailComposers::Kind MailComposers::choose(const Session &session)
{
    // Inside a sandbox, xdg-email would start a mail program that cannot see
    // our files; the portal hands it the log file itself.
    if (session.sandboxed && session.portalOnBus)
        return Kind::portal;
    if (!session.sandboxed && !session.xdgEmail.isEmpty())
        return Kind::xdgEmail;
    if (!session.xdgOpen.isEmpty())
        return Kind::mailto;
    return Kind::none;
}

std::unique_ptr<MailComposer> MailComposers::forSession(const Session &session)
{
    switch (choose(session)) {
    case Kind::portal:
        return std::make_unique<PortalEmailComposer>(QDBusConnection::sessionBus());
    case Kind::xdgEmail:
        return std::make_unique<XdgEmailComposer>(session.xdgEmail);
    case Kind::mailto:
        return std::make_unique<MailtoComposer>(session.xdgOpen);
    case Kind::none:
        break;
    }
    return nullptr;
}

void MailComposers::install()
{
    MenuAction::setMailService([] { return forSession(currentSession()); });
}
