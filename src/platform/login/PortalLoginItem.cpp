#include "platform/login/PortalLoginItem.h"

#include "app/Log.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QRandomGenerator>

bool PortalLoginItem::setEnabled(bool enabled, QString *error)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        *error = QStringLiteral("no session bus");
        return false;
    }
    const QString token =
        QStringLiteral("narv%1").arg(QRandomGenerator::global()->generate() & 0xffffff);
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.portal.Desktop"),
        QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Background"), QStringLiteral("RequestBackground"));
    const QVariantMap options{
        {QStringLiteral("handle_token"), token},
        {QStringLiteral("reason"),
         QStringLiteral("Remind you of breaks from the moment you log in")},
        {QStringLiteral("autostart"), enabled},
        {QStringLiteral("commandline"), QStringList{QStringLiteral("narv")}},
        {QStringLiteral("dbus-activatable"), false},
    };
    call << QString() << options;
    const QDBusMessage reply = bus.call(call, QDBus::Block, 5000);
    if (reply.type() == QDBusMessage::ErrorMessage) {
        *error = reply.errorName() + QStringLiteral(": ") + reply.errorMessage();
        return false;
    }
    const QString handle = reply.arguments().value(0).value<QDBusObjectPath>().path();
    bus.connect(QStringLiteral("org.freedesktop.portal.Desktop"), handle,
                QStringLiteral("org.freedesktop.portal.Request"), QStringLiteral("Response"), this,
                SLOT(onResponse(uint, QVariantMap)));
    return true;
}

void PortalLoginItem::onResponse(uint response, const QVariantMap &results)
{
    if (response != 0 || !results.value(QStringLiteral("autostart")).toBool())
        LOG_WARNING(QStringLiteral("the desktop did not allow starting at login (answer %1)")
                        .arg(response));
}
