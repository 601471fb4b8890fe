#include "DBusMenuExporter.h"

#include "MenuIcons.h"
#include "app/Log.h"
#include "dbusmenuadaptor.h"
#include "statusbar/StatusBarController.h"

#include <QGuiApplication>

using StatusBarController::MenuItem;

namespace {
QVariantMap filtered(const QVariantMap &properties, const QStringList &names)
{
    if (names.isEmpty())
        return properties;
    QVariantMap result;
    for (const QString &name : names) {
        if (const auto it = properties.constFind(name); it != properties.cend())
            result.insert(name, it.value());
    }
    return result;
}

QVariantMap rootProperties()
{
    return {{QStringLiteral("children-display"), QStringLiteral("submenu")}};
}
} // namespace

DBusMenuExporter::DBusMenuExporter(const QDBusConnection &connection, QObject *parent)
    : QObject(parent), m_connection(connection)
{
    registerDBusMenuTypes();
    new DbusmenuAdaptor(this);
    m_exported = m_connection.registerObject(QString::fromLatin1(objectPath), this,
                                             QDBusConnection::ExportAdaptors);
    if (!m_exported)
        LOG_WARNING(QStringLiteral("could not export the status menu at %1: %2")
                        .arg(QString::fromLatin1(objectPath), m_connection.lastError().message()));
}

DBusMenuExporter::~DBusMenuExporter()
{
    if (m_exported)
        m_connection.unregisterObject(QString::fromLatin1(objectPath));
}

QVariantMap DBusMenuExporter::properties(const MenuItem &item)
{
    if (item.separator)
        return {{QStringLiteral("type"), QStringLiteral("separator")}};
    QVariantMap map;
    map.insert(QStringLiteral("label"), QString(item.title).replace(u'_', QStringLiteral("__")));
    map.insert(QStringLiteral("enabled"), item.isEnabled());
    map.insert(QStringLiteral("visible"), true);
    if (!item.image.isEmpty()) {
        // The symbol name stays as the accessible name, as the image's description.
        map.insert(QStringLiteral("accessible-desc"), item.image);
        if (MenuIcons::themeHas(item.image)) {
            map.insert(QStringLiteral("icon-name"), MenuIcons::themeName(item.image));
        } else {
            const QByteArray png = MenuIcons::bundledPng(item.image, 16);
            if (!png.isEmpty())
                map.insert(QStringLiteral("icon-data"), png);
        }
    }
    if (!item.keyEquivalent.isEmpty()) {
        // Key names as the panels' toolkits spell them.
        const QString key =
            item.keyEquivalent == u"," ? QStringLiteral("comma") : item.keyEquivalent;
        map.insert(QStringLiteral("shortcut"),
                   QVariant::fromValue(DBusMenuShortcut{{QStringLiteral("Control"), key}}));
    }
    if (item.tag != 0)
        map.insert(QStringLiteral("x-narv-tag"), item.tag);
    return map;
}

void DBusMenuExporter::layoutChanged()
{
    ++m_revision;
    Q_EMIT LayoutUpdated(m_revision, 0);
}

void DBusMenuExporter::itemChanged(int id)
{
    const MenuItem *item = StatusBarController::itemWithId(id);
    if (!item)
        return;
    Q_EMIT ItemsPropertiesUpdated({DBusMenuItem{id, properties(*item)}}, {});
}

QString DBusMenuExporter::textDirection() const
{
    return QGuiApplication::layoutDirection() == Qt::RightToLeft ? QStringLiteral("rtl")
                                                                 : QStringLiteral("ltr");
}

bool DBusMenuExporter::knows(int id) const
{
    return id == 0 || StatusBarController::itemWithId(id) != nullptr;
}

bool DBusMenuExporter::AboutToShow(int)
{
    // The layout is always current: panels never need to fetch it again here.
    return false;
}

QList<int> DBusMenuExporter::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors)
{
    idErrors.clear();
    for (int id : ids) {
        if (!knows(id))
            idErrors.append(id);
    }
    return {};
}

void DBusMenuExporter::Event(int id, const QString &eventId, const QDBusVariant &, uint)
{
    handleEvent(id, eventId);
}

QList<int> DBusMenuExporter::EventGroup(const DBusMenuEventList &events)
{
    QList<int> idErrors;
    for (const DBusMenuEvent &event : events) {
        if (knows(event.id))
            handleEvent(event.id, event.eventId);
        else
            idErrors.append(event.id);
    }
    return idErrors;
}

void DBusMenuExporter::handleEvent(int id, const QString &eventId)
{
    // "opened", "closed" and "hovered" need nothing from us.
    if (eventId != u"clicked")
        return;
    // After the reply has gone out: Quit ends the event loop, and the panel
    // should not wait on an action that opens a window.
    QMetaObject::invokeMethod(
        this,
        [id] {
            if (!StatusBarController::activate(id))
                LOG_WARNING(QStringLiteral("status menu: a click on item %1, which is not in "
                                           "the menu or cannot be chosen; ignored")
                                .arg(id));
        },
        Qt::QueuedConnection);
}

DBusMenuItemList DBusMenuExporter::GetGroupProperties(const QList<int> &ids,
                                                      const QStringList &propertyNames)
{
    DBusMenuItemList result;
    for (int id : ids) {
        if (id == 0) {
            result.append({0, filtered(rootProperties(), propertyNames)});
        } else if (const MenuItem *item = StatusBarController::itemWithId(id)) {
            result.append({id, filtered(properties(*item), propertyNames)});
        }
    }
    return result;
}

uint DBusMenuExporter::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                                 DBusMenuLayoutItem &layout)
{
    layout = {};
    layout.id = parentId;
    if (parentId == 0) {
        layout.properties = filtered(rootProperties(), propertyNames);
        if (recursionDepth != 0) {
            for (const MenuItem &item : StatusBarController::menu())
                layout.children.append({item.id, filtered(properties(item), propertyNames), {}});
        }
    } else if (const MenuItem *item = StatusBarController::itemWithId(parentId)) {
        layout.properties = filtered(properties(*item), propertyNames);
    } else {
        LOG_WARNING(QStringLiteral("status menu: layout asked for item %1, which is not in the "
                                   "menu; sent an empty one")
                        .arg(parentId));
    }
    return m_revision;
}

QDBusVariant DBusMenuExporter::GetProperty(int id, const QString &name)
{
    // An unknown item or property reads as an empty text: a variant must hold something.
    const QVariantMap map = id == 0 ? rootProperties()
                            : StatusBarController::itemWithId(id)
                                ? properties(*StatusBarController::itemWithId(id))
                                : QVariantMap();
    return QDBusVariant(map.value(name, QString()));
}
