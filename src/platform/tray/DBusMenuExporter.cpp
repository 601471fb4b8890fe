#include "DBusMenuExporter.h"

#include "MainLoopBus.h"
#include "MenuIcons.h"
#include "StatusNotifierItem.h"
#include "app/Log.h"
#include "statusbar/StatusBarController.h"

#include <QLocale>

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

// (ia{sv})
void writeItem(DBusMessageIter *it, const DBusMenuItem &item)
{
    DBusMessageIter s;
    dbus_message_iter_open_container(it, DBUS_TYPE_STRUCT, nullptr, &s);
    const dbus_int32_t id = item.id;
    dbus_message_iter_append_basic(&s, DBUS_TYPE_INT32, &id);
    DBusWrite::properties(&s, item.properties);
    dbus_message_iter_close_container(it, &s);
}

// (ia{sv}av), the children each in a variant.
void writeLayout(DBusMessageIter *it, const DBusMenuLayoutItem &item)
{
    DBusMessageIter s;
    dbus_message_iter_open_container(it, DBUS_TYPE_STRUCT, nullptr, &s);
    const dbus_int32_t id = item.id;
    dbus_message_iter_append_basic(&s, DBUS_TYPE_INT32, &id);
    DBusWrite::properties(&s, item.properties);
    DBusMessageIter children;
    dbus_message_iter_open_container(&s, DBUS_TYPE_ARRAY, "v", &children);
    for (const DBusMenuLayoutItem &child : item.children) {
        DBusMessageIter v;
        dbus_message_iter_open_container(&children, DBUS_TYPE_VARIANT, "(ia{sv}av)", &v);
        writeLayout(&v, child);
        dbus_message_iter_close_container(&children, &v);
    }
    dbus_message_iter_close_container(&s, &children);
    dbus_message_iter_close_container(it, &s);
}

void writeIntList(DBusMessageIter *it, const QList<int> &list)
{
    DBusMessageIter array;
    dbus_message_iter_open_container(it, DBUS_TYPE_ARRAY, "i", &array);
    for (int value : list) {
        const dbus_int32_t i = value;
        dbus_message_iter_append_basic(&array, DBUS_TYPE_INT32, &i);
    }
    dbus_message_iter_close_container(it, &array);
}
} // namespace

DBusMenuExporter::DBusMenuExporter(MainLoopBus *bus, QObject *parent) : QObject(parent), m_bus(bus)
{
    m_exported = m_bus->registerObject(QString::fromLatin1(objectPath),
                                       [this](DBusMessage *call) { return handle(call); });
    if (!m_exported)
        LOG_WARNING(QStringLiteral("could not export the status menu at %1")
                        .arg(QString::fromLatin1(objectPath)));
}

DBusMenuExporter::~DBusMenuExporter()
{
    if (m_exported && m_bus)
        m_bus->unregisterObject(QString::fromLatin1(objectPath));
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
            const QByteArray png = MenuIcons::bundledPng(item.image);
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
    if (!m_exported || !m_bus)
        return;
    DBusMessage *signal = dbus_message_new_signal(objectPath, interfaceName, "LayoutUpdated");
    const dbus_uint32_t revision = m_revision;
    const dbus_int32_t parent = 0;
    dbus_message_append_args(signal, DBUS_TYPE_UINT32, &revision, DBUS_TYPE_INT32, &parent,
                             DBUS_TYPE_INVALID);
    m_bus->send(signal);
}

void DBusMenuExporter::itemChanged(int id)
{
    const MenuItem *item = StatusBarController::itemWithId(id);
    if (!item || !m_exported || !m_bus)
        return;
    DBusMessage *signal =
        dbus_message_new_signal(objectPath, interfaceName, "ItemsPropertiesUpdated");
    DBusMessageIter it;
    dbus_message_iter_init_append(signal, &it);
    DBusMessageIter updated;
    dbus_message_iter_open_container(&it, DBUS_TYPE_ARRAY, "(ia{sv})", &updated);
    writeItem(&updated, {id, properties(*item)});
    dbus_message_iter_close_container(&it, &updated);
    DBusMessageIter removed;
    dbus_message_iter_open_container(&it, DBUS_TYPE_ARRAY, "(ias)", &removed);
    dbus_message_iter_close_container(&it, &removed);
    m_bus->send(signal);
}

QString DBusMenuExporter::textDirection() const
{
    // The language the desktop runs in: panels lay the menu out in it.
    return QLocale().textDirection() == Qt::RightToLeft ? QStringLiteral("rtl")
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

void DBusMenuExporter::Event(int id, const QString &eventId)
{
    handleEvent(id, eventId);
}

QList<int> DBusMenuExporter::EventGroup(const QList<QPair<int, QString>> &events)
{
    QList<int> idErrors;
    for (const auto &[id, eventId] : events) {
        if (knows(id))
            handleEvent(id, eventId);
        else
            idErrors.append(id);
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

QVariant DBusMenuExporter::GetProperty(int id, const QString &name)
{
    // An unknown item or property reads as an empty text: a variant must hold something.
    const QVariantMap map = id == 0 ? rootProperties()
                            : StatusBarController::itemWithId(id)
                                ? properties(*StatusBarController::itemWithId(id))
                                : QVariantMap();
    return map.value(name, QString());
}

DBusMessage *DBusMenuExporter::handle(DBusMessage *call)
{
    const char *interface = dbus_message_get_interface(call);
    const QString member = QString::fromUtf8(dbus_message_get_member(call));
    const QString iface = QString::fromUtf8(interface ? interface : "");
    DBusMessageIter args;
    dbus_message_iter_init(call, &args);
    DBusMessage *reply = dbus_message_new_method_return(call);
    DBusMessageIter out;
    dbus_message_iter_init_append(reply, &out);

    if (iface == u"org.freedesktop.DBus.Introspectable" && member == u"Introspect") {
        DBusWrite::string(&out, introspectionXml(QStringLiteral("com.canonical.dbusmenu.xml")));
        return reply;
    }
    if (iface == u"org.freedesktop.DBus.Properties") {
        const QVariantMap all{{QStringLiteral("Version"), version()},
                              {QStringLiteral("TextDirection"), textDirection()},
                              {QStringLiteral("Status"), status()},
                              {QStringLiteral("IconThemePath"), iconThemePath()}};
        const QString asked = DBusRead::next(&args).toString();
        dbus_message_unref(reply);
        if (asked != QLatin1String(interfaceName) && !(member == u"GetAll" && asked.isEmpty()))
            return dbus_message_new_error(call, DBUS_ERROR_UNKNOWN_INTERFACE,
                                          "no such interface here");
        reply = dbus_message_new_method_return(call);
        dbus_message_iter_init_append(reply, &out);
        if (member == u"GetAll") {
            DBusWrite::properties(&out, all);
            return reply;
        }
        if (member == u"Get") {
            const QString name = DBusRead::next(&args).toString();
            if (all.contains(name)) {
                DBusWrite::variant(&out, all.value(name));
                return reply;
            }
            dbus_message_unref(reply);
            return dbus_message_new_error(call, DBUS_ERROR_UNKNOWN_PROPERTY, "no such property");
        }
        dbus_message_unref(reply);
        if (member == u"Set")
            return dbus_message_new_error(call, DBUS_ERROR_PROPERTY_READ_ONLY,
                                          "the menu's properties are read-only");
        return nullptr;
    }
    if (!iface.isEmpty() && iface != QLatin1String(interfaceName)) {
        dbus_message_unref(reply);
        return nullptr;
    }

    if (member == u"GetLayout") {
        const int parentId = DBusRead::next(&args).toInt();
        const int depth = DBusRead::next(&args).toInt();
        const QStringList names = DBusRead::stringList(&args);
        DBusMenuLayoutItem layout;
        const dbus_uint32_t revision = GetLayout(parentId, depth, names, layout);
        dbus_message_iter_append_basic(&out, DBUS_TYPE_UINT32, &revision);
        writeLayout(&out, layout);
    } else if (member == u"GetGroupProperties") {
        const QList<int> ids = DBusRead::intList(&args);
        const QStringList names = DBusRead::stringList(&args);
        DBusMessageIter array;
        dbus_message_iter_open_container(&out, DBUS_TYPE_ARRAY, "(ia{sv})", &array);
        for (const DBusMenuItem &item : GetGroupProperties(ids, names))
            writeItem(&array, item);
        dbus_message_iter_close_container(&out, &array);
    } else if (member == u"GetProperty") {
        const int id = DBusRead::next(&args).toInt();
        DBusWrite::variant(&out, GetProperty(id, DBusRead::next(&args).toString()));
    } else if (member == u"Event") {
        const int id = DBusRead::next(&args).toInt();
        Event(id, DBusRead::next(&args).toString());
    } else if (member == u"EventGroup") {
        // a(isvu): only the id and the event's name matter here.
        QList<QPair<int, QString>> events;
        if (dbus_message_iter_get_arg_type(&args) == DBUS_TYPE_ARRAY) {
            DBusMessageIter array;
            dbus_message_iter_recurse(&args, &array);
            while (dbus_message_iter_get_arg_type(&array) == DBUS_TYPE_STRUCT) {
                DBusMessageIter fields;
                dbus_message_iter_recurse(&array, &fields);
                const int id = DBusRead::next(&fields).toInt();
                events.append({id, DBusRead::next(&fields).toString()});
                dbus_message_iter_next(&array);
            }
        }
        writeIntList(&out, EventGroup(events));
    } else if (member == u"AboutToShow") {
        const dbus_bool_t needUpdate = AboutToShow(DBusRead::next(&args).toInt());
        dbus_message_iter_append_basic(&out, DBUS_TYPE_BOOLEAN, &needUpdate);
    } else if (member == u"AboutToShowGroup") {
        QList<int> idErrors;
        writeIntList(&out, AboutToShowGroup(DBusRead::intList(&args), idErrors));
        writeIntList(&out, idErrors);
    } else {
        dbus_message_unref(reply);
        return nullptr;
    }
    return reply;
}
