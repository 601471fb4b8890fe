#pragma once

#include <QByteArray>
#include <QDBusArgument>
#include <QList>
#include <QString>

// The structures of the StatusNotifierItem protocol, as QtDBus marshals them.

// (iiay): one icon size as ARGB32 in network byte order.
struct DBusImage {
    int width = 0;
    int height = 0;
    QByteArray data;
};
using DBusImageList = QList<DBusImage>;

// (sa(iiay)ss): icon name, icon images, title and description of the tooltip.
struct DBusToolTip {
    QString iconName;
    DBusImageList iconPixmap;
    QString title;
    QString description;
};

QDBusArgument &operator<<(QDBusArgument &argument, const DBusImage &image);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusImage &image);
QDBusArgument &operator<<(QDBusArgument &argument, const DBusToolTip &toolTip);
const QDBusArgument &operator>>(const QDBusArgument &argument, DBusToolTip &toolTip);

// Registers the types with QtDBus; safe to call more than once.
void registerStatusNotifierTypes();

Q_DECLARE_METATYPE(DBusImage)
Q_DECLARE_METATYPE(DBusToolTip)
