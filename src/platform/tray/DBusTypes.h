#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusVariant>
#include <QList>
#include <QStringList>
#include <QVariantMap>

#include <tuple>

// The structures of the StatusNotifierItem and dbusmenu protocols, as QtDBus
// marshals them for the adaptors. Each ties its fields in D-Bus order.

// (iiay): one icon size as ARGB32 in network byte order.
struct DBusImage {
    int width = 0;
    int height = 0;
    QByteArray data;
    auto fields() { return std::tie(width, height, data); }
};
using DBusImageList = QList<DBusImage>;

// (sa(iiay)ss): icon name, icon images, title and description of the tooltip.
struct DBusToolTip {
    QString iconName;
    DBusImageList iconPixmap;
    QString title;
    QString description;
    auto fields() { return std::tie(iconName, iconPixmap, title, description); }
};

// (ia{sv}): a menu item's id and its properties.
struct DBusMenuItem {
    int id = 0;
    QVariantMap properties;
    auto fields() { return std::tie(id, properties); }
};
using DBusMenuItemList = QList<DBusMenuItem>;

// (ias): an item's id and the names of properties that went back to their defaults.
struct DBusMenuItemKeys {
    int id = 0;
    QStringList properties;
    auto fields() { return std::tie(id, properties); }
};
using DBusMenuItemKeysList = QList<DBusMenuItemKeys>;

// (isvu): one event of an EventGroup call.
struct DBusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
    auto fields() { return std::tie(id, eventId, data, timestamp); }
};
using DBusMenuEventList = QList<DBusMenuEvent>;

// (ia{sv}av): an item with its children, each child wrapped in a variant.
struct DBusMenuLayoutItem {
    int id = 0;
    QVariantMap properties;
    QList<DBusMenuLayoutItem> children;
};

// aas: a key combination, e.g. {{"Control", "p"}}.
using DBusMenuShortcut = QList<QStringList>;

template <typename T>
concept DBusStructure = requires(T value)
{
    value.fields();
};

template <DBusStructure T> QDBusArgument &operator<<(QDBusArgument &argument, const T &value)
{
    argument.beginStructure();
    // fields() only ties references; nothing is written through them here.
    std::apply([&](const auto &...field) { ((argument << field), ...); },
               const_cast<T &>(value).fields());
    argument.endStructure();
    return argument;
}

template <DBusStructure T> const QDBusArgument &operator>>(const QDBusArgument &argument, T &value)
{
    argument.beginStructure();
    std::apply([&](auto &...field) { ((argument >> field), ...); }, value.fields());
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuLayoutItem &item);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuLayoutItem &item);

Q_DECLARE_METATYPE(DBusImage)
Q_DECLARE_METATYPE(DBusToolTip)
Q_DECLARE_METATYPE(DBusMenuItem)
Q_DECLARE_METATYPE(DBusMenuItemKeys)
Q_DECLARE_METATYPE(DBusMenuLayoutItem)
Q_DECLARE_METATYPE(DBusMenuEvent)

// Registers the types with QtDBus; safe to call more than once.
void registerDBusTypes();
