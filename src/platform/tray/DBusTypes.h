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
// marshals them for the adaptors. Each names its fields in D-Bus order.
#define NARV_DBUS_FIELDS(...)                                                                      \
    auto fields() { return std::tie(__VA_ARGS__); }                                                \
    auto fields() const { return std::tie(__VA_ARGS__); }

// (iiay): one icon size as ARGB32 in network byte order.
struct DBusImage {
    int width = 0;
    int height = 0;
    QByteArray data;
    NARV_DBUS_FIELDS(width, height, data)
};
using DBusImageList = QList<DBusImage>;

// (sa(iiay)ss): icon name, icon images, title and description of the tooltip.
struct DBusToolTip {
    QString iconName;
    DBusImageList iconPixmap;
    QString title;
    QString description;
    NARV_DBUS_FIELDS(iconName, iconPixmap, title, description)
};

// (ia{sv}): a menu item's id and its properties.
struct DBusMenuItem {
    int id = 0;
    QVariantMap properties;
    NARV_DBUS_FIELDS(id, properties)
};
using DBusMenuItemList = QList<DBusMenuItem>;

// (ias): an item's id and the names of properties that went back to their defaults.
struct DBusMenuItemKeys {
    int id = 0;
    QStringList properties;
    NARV_DBUS_FIELDS(id, properties)
};
using DBusMenuItemKeysList = QList<DBusMenuItemKeys>;

// (isvu): one event of an EventGroup call.
struct DBusMenuEvent {
    int id = 0;
    QString eventId;
    QDBusVariant data;
    uint timestamp = 0;
    NARV_DBUS_FIELDS(id, eventId, data, timestamp)
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
concept DBusStructure = requires(T value) { value.fields(); };

template <DBusStructure T>
QDBusArgument &operator<<(QDBusArgument &argument, const T &value)
{
    argument.beginStructure();
    std::apply([&](const auto &...field) { ((argument << field), ...); }, value.fields());
    argument.endStructure();
    return argument;
}

template <DBusStructure T>
const QDBusArgument &operator>>(const QDBusArgument &argument, T &value)
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
