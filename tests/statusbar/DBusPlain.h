#pragma once

#include <QDBusArgument>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QVariant>

// Shared by the tray tests and the benchmark, which read replies from the
// status item and its menu by their D-Bus signatures.

// A D-Bus value as plain Qt values: structures and arrays as lists, dictionaries
// as maps, variants unwrapped.
inline QVariant plain(const QVariant &value);

inline QVariant plain(const QDBusArgument &argument)
{
    switch (argument.currentType()) {
    case QDBusArgument::StructureType:
    case QDBusArgument::ArrayType: {
        const bool structure = argument.currentType() == QDBusArgument::StructureType;
        QVariantList items;
        structure ? argument.beginStructure() : argument.beginArray();
        while (!argument.atEnd())
            items.append(plain(argument.asVariant()));
        structure ? argument.endStructure() : argument.endArray();
        return items;
    }
    case QDBusArgument::MapType: {
        QVariantMap map;
        argument.beginMap();
        while (!argument.atEnd()) {
            argument.beginMapEntry();
            const QString key = plain(argument.asVariant()).toString();
            map.insert(key, plain(argument.asVariant()));
            argument.endMapEntry();
        }
        argument.endMap();
        return map;
    }
    default:
        return plain(argument.asVariant());
    }
}

inline QVariant plain(const QVariant &value)
{
    if (value.userType() == qMetaTypeId<QDBusVariant>())
        return plain(value.value<QDBusVariant>().variant());
    if (value.userType() == qMetaTypeId<QDBusArgument>())
        return plain(value.value<QDBusArgument>());
    if (value.userType() == qMetaTypeId<QDBusObjectPath>())
        return value.value<QDBusObjectPath>().path();
    return value;
}
