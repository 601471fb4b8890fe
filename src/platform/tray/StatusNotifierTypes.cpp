#include "StatusNotifierTypes.h"

#include <QDBusMetaType>
#include <QtEndian>

DBusImage DBusImage::fromImage(const QImage &source)
{
    const QImage image = source.convertToFormat(QImage::Format_ARGB32);
    DBusImage result;
    result.width = image.width();
    result.height = image.height();
    result.data.resize(qsizetype(image.width()) * image.height() * 4);
    auto *out = reinterpret_cast<quint32 *>(result.data.data());
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const quint32 *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            *out++ = qToBigEndian(line[x]); // the protocol wants A, R, G, B bytes in that order
    }
    return result;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusImage &image)
{
    argument.beginStructure();
    argument << image.width << image.height << image.data;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusImage &image)
{
    argument.beginStructure();
    argument >> image.width >> image.height >> image.data;
    argument.endStructure();
    return argument;
}

QDBusArgument &operator<<(QDBusArgument &argument, const DBusToolTip &toolTip)
{
    argument.beginStructure();
    argument << toolTip.iconName << toolTip.iconPixmap << toolTip.title << toolTip.description;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, DBusToolTip &toolTip)
{
    argument.beginStructure();
    argument >> toolTip.iconName >> toolTip.iconPixmap >> toolTip.title >> toolTip.description;
    argument.endStructure();
    return argument;
}

void registerStatusNotifierTypes()
{
    static const bool registered = [] {
        qDBusRegisterMetaType<DBusImage>();
        qDBusRegisterMetaType<DBusImageList>();
        qDBusRegisterMetaType<DBusToolTip>();
        // Properties are read by the names the adaptor spells out.
        qRegisterMetaType<DBusImageList>("DBusImageList");
        return true;
    }();
    Q_UNUSED(registered);
}
