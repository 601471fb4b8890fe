#include "StatusNotifierItem.h"

#include "IconTheme.h"
#include "app/Log.h"
#include "statusnotifieritemadaptor.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDir>

namespace {
const QString watcher = QString::fromLatin1(StatusNotifierItem::watcherService);
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString connectionName = QStringLiteral("narv-status-item");

// A call to the watcher; `done` gets its reply.
void callWatcher(QObject *context, const QDBusConnection &bus, const QString &interface,
                 const QString &method, const QVariantList &args,
                 std::function<void(const QDBusPendingCallWatcher &)> done)
{
    QDBusMessage call = QDBusMessage::createMethodCall(watcher, watcherPath, interface, method);
    call.setArguments(args);
    auto *pending = new QDBusPendingCallWatcher(bus.asyncCall(call), context);
    QObject::connect(pending, &QDBusPendingCallWatcher::finished, context,
                     [done](QDBusPendingCallWatcher *w) {
                         w->deleteLater();
                         done(*w);
                     });
}

// The emblem in the sizes make_tray_images drew, "<size>.argb".
DBusImageList emblemPixmaps()
{
    DBusImageList images;
    for (const QFileInfo &info :
         QDir(QStringLiteral(":/narv/tray/emblem")).entryInfoList(QDir::Files)) {
        const int size = info.baseName().toInt();
        QFile file(info.filePath());
        if (size > 0 && file.open(QIODevice::ReadOnly) && file.size() == qint64(size) * size * 4)
            images.append({size, size, file.readAll()});
    }
    if (images.isEmpty())
        LOG_WARNING(QStringLiteral("the status item's emblem is missing from the program: "
                                   "panels show it blank"));
    return images;
}
} // namespace

StatusNotifierItem::StatusNotifierItem(QObject *parent) : QObject(parent)
{
    registerDBusTypes();
    m_pixmaps = emblemPixmaps();
    m_serviceName =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    new StatusNotifierItemAdaptor(this);

    m_confirm.setSingleShot(true);
    connect(&m_confirm, &QTimer::timeout, this, &StatusNotifierItem::checkListed);
    m_reconnect.setSingleShot(true);
    connect(&m_reconnect, &QTimer::timeout, this, [this] {
        if (connectToBus()) {
            LOG_INFO(QStringLiteral("the status item is back on the session bus"));
            return;
        }
        // 1, 2, 4 ... up to 32 seconds between tries.
        m_reconnect.start(1000 << qMin(++m_reconnects, 5));
    });
}

void StatusNotifierItem::start()
{
    const bool connected = connectToBus();
    // Our icon in the icon theme lets panels draw it at any size; looked up
    // once the registration has gone out (reading the themes takes a while).
    if (IconTheme::current().has(AppInfo::identifier()))
        m_iconName = AppInfo::identifier();
    if (connected)
        return;
    LOG_WARNING(QStringLiteral("no session bus (%1): the status item can only be a classic "
                               "tray icon")
                    .arg(m_connection.lastError().message()));
    setWatcherPresent(false);
    m_reconnect.start(1000); // a bus may come later
}

StatusNotifierItem::~StatusNotifierItem()
{
    QDBusConnection::disconnectFromBus(connectionName);
}

bool StatusNotifierItem::connectToBus()
{
    QDBusConnection::disconnectFromBus(connectionName);
    m_connection = QDBusConnection::connectToBus(QDBusConnection::SessionBus, connectionName);
    if (!m_connection.isConnected())
        return false;
    delete m_menu;
    m_menu = new DBusMenuExporter(this);
    if (!m_connection.registerObject(QString::fromLatin1(DBusMenuExporter::objectPath), m_menu,
                                     QDBusConnection::ExportAdaptors) ||
        !m_connection.registerObject(QString::fromLatin1(objectPath), this,
                                     QDBusConnection::ExportAdaptors)) {
        LOG_WARNING(QStringLiteral("could not export the status item on the session bus"));
        m_connection.disconnectFromBus(connectionName);
        return false;
    }
    // The watcher hears of the item first; its answer says whether there is
    // one, and nothing else here waits for an answer.
    registerWithWatcher();
    m_connection.interface()->asyncCall(QStringLiteral("RequestName"), m_serviceName,
                                        4u); // DBUS_NAME_FLAG_DO_NOT_QUEUE
    m_connection.connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                         QStringLiteral("org.freedesktop.DBus.Local"),
                         QStringLiteral("Disconnected"), this, SLOT(connectionLost()));
    m_connection.connect(watcher, watcherPath, watcher,
                         QStringLiteral("StatusNotifierItemRegistered"), this,
                         SLOT(onItemRegistered(QString)));
    auto *owner = new QDBusServiceWatcher(watcher, m_connection,
                                          QDBusServiceWatcher::WatchForOwnerChange, m_menu);
    connect(owner, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &now) {
                if (!now.isEmpty())
                    registerWithWatcher();
                setWatcherPresent(!now.isEmpty());
            });
    m_reconnects = 0;
    return true;
}

void StatusNotifierItem::connectionLost()
{
    if (m_reconnect.isActive())
        return;
    LOG_WARNING(QStringLiteral("lost the session bus: the status item comes back when it is "
                               "there again"));
    setWatcherPresent(false);
    m_reconnect.start(1000);
}

void StatusNotifierItem::setWatcherPresent(bool present)
{
    if (!present)
        m_confirm.stop();
    if (m_watcher == present)
        return;
    if (!present && m_watcher)
        LOG_INFO(QStringLiteral("the StatusNotifierWatcher went away"));
    m_watcher = present;
    Q_EMIT watcherChanged(present);
}

void StatusNotifierItem::registerWithWatcher(bool again)
{
    if (!again) {
        m_listed = false;
        m_attempts = 0;
        m_confirm.stop();
    }
    ++m_attempts;
    callWatcher(this, m_connection, watcher, QStringLiteral("RegisterStatusNotifierItem"),
                {m_connection.baseService()}, [this](const QDBusPendingCallWatcher &reply) {
                    const QDBusError::ErrorType error =
                        reply.isError() ? reply.error().type() : QDBusError::NoError;
                    if (error == QDBusError::ServiceUnknown)
                        return setWatcherPresent(false);
                    if (error == QDBusError::Disconnected || error == QDBusError::NoReply)
                        return;
                    setWatcherPresent(true);
                    if (error != QDBusError::NoError && m_attempts == 1)
                        LOG_WARNING(QStringLiteral("the StatusNotifierWatcher refused the status "
                                                   "item: %1")
                                        .arg(reply.error().message()));
                    // Watchers take their time to look at a new item before they list it.
                    if (!m_listed)
                        m_confirm.start(500 << m_attempts);
                });
}

void StatusNotifierItem::checkListed()
{
    callWatcher(this, m_connection, QStringLiteral("org.freedesktop.DBus.Properties"),
                QStringLiteral("Get"), {watcher, QStringLiteral("RegisteredStatusNotifierItems")},
                [this](const QDBusPendingCallWatcher &reply) {
                    for (const QString &item :
                         QDBusPendingReply<QDBusVariant>(reply).value().variant().toStringList())
                        onItemRegistered(item);
                    if (m_listed || !m_watcher.value_or(false))
                        return;
                    if (m_attempts < registrationAttempts)
                        registerWithWatcher(true);
                    else if (m_attempts++ == registrationAttempts)
                        LOG_WARNING(QStringLiteral("the StatusNotifierWatcher does not list the "
                                                   "status item after %1 registrations: no item "
                                                   "in the panel")
                                        .arg(registrationAttempts));
                });
}

void StatusNotifierItem::onItemRegistered(const QString &item)
{
    // "<bus name>/<path>", GNOME's "<bus name>@<path>", or the bus name alone.
    const QString service = m_connection.baseService();
    if (m_listed ||
        !(item == service || item.startsWith(service + u'/') || item.startsWith(service + u'@')))
        return;
    m_listed = true;
    m_confirm.stop();
    LOG_INFO(QStringLiteral("status item registered as ") + service);
}

void StatusNotifierItem::setLabel(const QString &label)
{
    if (label == m_label)
        return;
    m_label = label;
    // Every second while counting: straight onto the bus, without the
    // adaptor's relay of a signal of ours; a send that fails means the
    // connection has gone.
    QDBusMessage signal = QDBusMessage::createSignal(QString::fromLatin1(objectPath),
                                                     QStringLiteral("org.kde.StatusNotifierItem"),
                                                     QStringLiteral("XAyatanaNewLabel"));
    if (!m_connection.send(signal << m_label << labelGuide()))
        connectionLost();
}

void StatusNotifierItem::setToolTip(const QString &text)
{
    if (text == m_toolTip)
        return;
    m_toolTip = text;
    // Panels read the tooltip back when told; Plasma reads every property,
    // the emblem's pixmaps included. That is why this is not the label.
    Q_EMIT NewToolTip();
}

void StatusNotifierItem::Activate(int, int)
{
    sendErrorReply(QDBusError::NotSupported,
                   QStringLiteral("Narv's status item is a menu: open its menu"));
}
