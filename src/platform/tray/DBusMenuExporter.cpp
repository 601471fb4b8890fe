#include "DBusMenuExporter.h"

#include "IconTheme.h"
#include "app/Log.h"
#include "dbusmenuadaptor.h"
#include "statusbar/StatusBarController.h"

#include <QFile>
#include <QLocale>

using StatusBarController::MenuItem;

DBusMenuExporter::DBusMenuExporter(QObject *parent) : QObject(parent)
{
    new DbusmenuAdaptor(this);
}

namespace {
// The properties a panel gets for the item: label (with "_" doubled, as the
// protocol reads one "_" as a mnemonic), enabled, icon (a name from the icon
// theme, else our own PNG), shortcut, and the tag as "x-narv-tag".
QVariantMap properties(const MenuItem &item)
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
        const QString name = IconTheme::symbolName(item.image);
        QFile png(QStringLiteral(":/narv/tray/menu/%1.png").arg(item.image));
        if (IconTheme::current().has(name))
            map.insert(QStringLiteral("icon-name"), name);
        else if (png.open(QIODevice::ReadOnly))
            map.insert(QStringLiteral("icon-data"), png.readAll());
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

// Those of the names asked for (all when none are); item 0 is the root.
QVariantMap propertiesOf(int id, const QStringList &names = {})
{
    QVariantMap all;
    if (id == 0)
        all.insert(QStringLiteral("children-display"), QStringLiteral("submenu"));
    else if (const MenuItem *item = StatusBarController::itemWithId(id))
        all = properties(*item);
    if (names.isEmpty())
        return all;
    QVariantMap wanted;
    for (const QString &name : names) {
        if (const auto it = all.constFind(name); it != all.cend())
            wanted.insert(name, it.value());
    }
    return wanted;
}

} // namespace

void DBusMenuExporter::itemChanged(int id)
{
    if (const MenuItem *item = StatusBarController::itemWithId(id))
        Q_EMIT ItemsPropertiesUpdated({DBusMenuItem{id, properties(*item)}}, {});
}

QString DBusMenuExporter::textDirection() const
{
    // The language the desktop runs in: panels lay the menu out in it.
    return QLocale().textDirection() == Qt::RightToLeft ? QStringLiteral("rtl")
                                                        : QStringLiteral("ltr");
}

QList<int> DBusMenuExporter::AboutToShowGroup(const QList<int> &ids, QList<int> &idErrors)
{
    idErrors.clear();
    for (int id : ids) {
        if (id != 0 && !StatusBarController::itemWithId(id))
            idErrors.append(id);
    }
    return {};
}

void DBusMenuExporter::Event(int id, const QString &eventId, const QDBusVariant &, uint)
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

QList<int> DBusMenuExporter::EventGroup(const DBusMenuEventList &events)
{
    QList<int> idErrors;
    for (const DBusMenuEvent &event : events) {
        if (event.id == 0 || StatusBarController::itemWithId(event.id))
            Event(event.id, event.eventId, event.data, event.timestamp);
        else
            idErrors.append(event.id);
    }
    return idErrors;
}

DBusMenuItemList DBusMenuExporter::GetGroupProperties(const QList<int> &ids,
                                                      const QStringList &propertyNames)
{
    DBusMenuItemList result;
    for (int id : ids) {
        if (id == 0 || StatusBarController::itemWithId(id))
            result.append({id, propertiesOf(id, propertyNames)});
    }
    return result;
}

uint DBusMenuExporter::GetLayout(int parentId, int recursionDepth, const QStringList &propertyNames,
                                 DBusMenuLayoutItem &layout)
{
    layout = {parentId, propertiesOf(parentId, propertyNames), {}};
    if (parentId == 0 && recursionDepth != 0) {
        for (const MenuItem &item : StatusBarController::menu())
            layout.children.append({item.id, propertiesOf(item.id, propertyNames), {}});
    } else if (parentId != 0 && !StatusBarController::itemWithId(parentId)) {
        LOG_WARNING(QStringLiteral("status menu: layout asked for item %1, which is not in the "
                                   "menu; sent an empty one")
                        .arg(parentId));
    }
    return m_revision;
}

QDBusVariant DBusMenuExporter::GetProperty(int id, const QString &name)
{
    // An unknown item or property reads as an empty text: a variant must hold something.
    return QDBusVariant(propertiesOf(id).value(name, QString()));
}
