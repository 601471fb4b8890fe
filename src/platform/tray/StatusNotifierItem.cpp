#include "StatusNotifierItem.h"

#include "DBusMenuExporter.h"
#include "app/AppInfo.h"
#include "app/Log.h"
#include "statusnotifieritemadaptor.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QIcon>
#include <QPainter>
#include <QSvgRenderer>

// emblem.qrc sits in a static library: naming its initializer pulls it into
// the program. Q_INIT_RESOURCE has to be used outside any namespace.
static void initEmblemResource()
{
    Q_INIT_RESOURCE(emblem);
}

namespace {
// A mid blue: panels draw the pixmap as it is, on light and dark backgrounds alike.
const QColor emblemColor(0x3d, 0x9b, 0xd6);

// The icon font's glyph "narv", drawn from the SVG the font is built from:
// the same shape (its viewBox is the font's em square) without QFontDatabase
// and fontconfig, which would stay resident for the rest of the process only
// for these few pixmaps.
QImage emblem(int size)
{
    static const bool initialized = (initEmblemResource(), true);
    Q_UNUSED(initialized);
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer svg(QStringLiteral(":/narv/tray/narv.svg"));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), emblemColor);
    return image;
}
} // namespace

StatusNotifierItem::StatusNotifierItem(const QDBusConnection &connection, QObject *parent)
    : QObject(parent), m_connection(connection)
{
    registerStatusNotifierTypes();
    // Panels poll the item often (some on every tooltip change, once a second
    // here): a few sizes keep that cheap; panels scale the nearest one.
    for (int size : {16, 22, 32, 48})
        m_pixmaps.append(DBusImage::fromImage(emblem(size)));
    // Once our icon is installed into the icon theme, panels can draw it at
    // any size themselves; until then they have the pixmaps.
    if (QIcon::hasThemeIcon(AppInfo::identifier()))
        m_iconName = AppInfo::identifier();
    new StatusNotifierItemAdaptor(this);

    m_serviceName =
        QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
    m_exported = m_connection.registerObject(QString::fromLatin1(objectPath), this,
                                             QDBusConnection::ExportAdaptors) &&
                 m_connection.registerService(m_serviceName);
    if (!m_exported) {
        LOG_WARNING(QStringLiteral("could not put the status item on the session bus: %1")
                        .arg(m_connection.lastError().message()));
        return;
    }

    m_serviceWatcher = new QDBusServiceWatcher(QString::fromLatin1(watcherService), m_connection,
                                               QDBusServiceWatcher::WatchForOwnerChange, this);
    connect(m_serviceWatcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
            [this](const QString &, const QString &, const QString &newOwner) {
                const bool present = !newOwner.isEmpty();
                Q_EMIT watcherChanged(present);
                if (present)
                    registerWithWatcher();
                else
                    LOG_INFO(QStringLiteral("the StatusNotifierWatcher went away"));
            });
    if (watcherPresent())
        registerWithWatcher();
}

StatusNotifierItem::~StatusNotifierItem()
{
    if (m_exported) {
        m_connection.unregisterService(m_serviceName);
        m_connection.unregisterObject(QString::fromLatin1(objectPath));
    }
}

bool StatusNotifierItem::watcherPresent() const
{
    QDBusConnectionInterface *bus = m_connection.interface();
    return bus && bus->isServiceRegistered(QString::fromLatin1(watcherService)).value();
}

void StatusNotifierItem::registerWithWatcher()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QString::fromLatin1(watcherService), QStringLiteral("/StatusNotifierWatcher"),
        QString::fromLatin1(watcherService), QStringLiteral("RegisterStatusNotifierItem"));
    call << m_serviceName;
    auto *pending = new QDBusPendingCallWatcher(m_connection.asyncCall(call), this);
    connect(pending, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *w) {
        w->deleteLater();
        const QDBusPendingReply<> reply = *w;
        if (reply.isError()) {
            LOG_WARNING(QStringLiteral("the StatusNotifierWatcher refused the status item: %1")
                            .arg(reply.error().message()));
            return;
        }
        LOG_INFO(QStringLiteral("status item registered as ") + m_serviceName);
    });
}

QString StatusNotifierItem::id() const
{
    return AppInfo::identifier();
}

QString StatusNotifierItem::title() const
{
    return AppInfo::name();
}

DBusToolTip StatusNotifierItem::toolTip() const
{
    // No pixmaps: panels show the item's own icon, and the tooltip is re-read
    // with every change of the time.
    return {m_iconName, {}, AppInfo::name(), m_label};
}

QDBusObjectPath StatusNotifierItem::menu() const
{
    return QDBusObjectPath(QString::fromLatin1(DBusMenuExporter::objectPath));
}

void StatusNotifierItem::setLabel(const QString &label)
{
    if (label == m_label)
        return;
    m_label = label;
    Q_EMIT XAyatanaNewLabel(m_label, labelGuide());
    Q_EMIT NewToolTip();
}

void StatusNotifierItem::ContextMenu(int, int)
{
}

void StatusNotifierItem::Activate(int, int)
{
}

void StatusNotifierItem::SecondaryActivate(int, int)
{
}

void StatusNotifierItem::Scroll(int, const QString &)
{
}
