#include "DBusTypes.h"

QDBusArgument &operator<<(QDBusArgument &argument, const DBusMenuLayoutItem &item)
{
    argument.beginStructure();
    argument << item.id << item.properties;
    argument.beginArray(qMetaTypeId<QDBusVariant>());
    for (const DBusMenuLayoutItem &child : item.children)
        argument << QDBusVariant(QVariant::fromValue(child));
    argument.endArray();
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusMenuLayoutItem &item)
{
    argument.beginStructure();
    argument >> item.id >> item.properties;
    item.children.clear();
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        item.children.append(DBusMenuLayoutItem());
        child.variant().value<QDBusArgument>() >> item.children.last();
    }
    argument.endArray();
    argument.endStructure();
    return argument;
}

void registerDBusTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<DBusImage>();
        qDBusRegisterMetaType<DBusImageList>();
        qDBusRegisterMetaType<DBusToolTip>();
        qDBusRegisterMetaType<DBusMenuItem>();
        qDBusRegisterMetaType<DBusMenuItemList>();
        qDBusRegisterMetaType<DBusMenuItemKeys>();
        qDBusRegisterMetaType<DBusMenuItemKeysList>();
        qDBusRegisterMetaType<DBusMenuLayoutItem>();
        qDBusRegisterMetaType<DBusMenuEvent>();
        qDBusRegisterMetaType<DBusMenuEventList>();
        qDBusRegisterMetaType<DBusMenuShortcut>();
        // The adaptors relay signals and take arguments by these names.
        qRegisterMetaType<DBusImageList>("DBusImageList");
        qRegisterMetaType<DBusToolTip>("DBusToolTip");
        qRegisterMetaType<DBusMenuItemList>("DBusMenuItemList");
        qRegisterMetaType<DBusMenuItemKeysList>("DBusMenuItemKeysList");
        qRegisterMetaType<DBusMenuEventList>("DBusMenuEventList");
        return true;
    }();
    Q_UNUSED(registered);
}
