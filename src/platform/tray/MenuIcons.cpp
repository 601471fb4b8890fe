#include "MenuIcons.h"

#include "IconTheme.h"

#include <QFile>
#include <QHash>

QString MenuIcons::themeName(const QString &symbol)
{
    // The freedesktop icon names have no drop: ours is always used.
    static const QHash<QString, QString> names = {
        {QStringLiteral("stop.circle"), QStringLiteral("media-playback-stop")},
        {QStringLiteral("play.circle"), QStringLiteral("media-playback-start")},
        {QStringLiteral("gearshape.circle"), QStringLiteral("preferences-system")},
        {QStringLiteral("arrow.counterclockwise.icloud"), QStringLiteral("system-software-update")},
        {QStringLiteral("mail.stack"), QStringLiteral("mail-message-new")},
        {QStringLiteral("info.circle"), QStringLiteral("help-about")},
        {QStringLiteral("escape"), QStringLiteral("application-exit")},
    };
    return names.value(symbol);
}

bool MenuIcons::themeHas(const QString &symbol)
{
    return IconTheme::current().has(themeName(symbol));
}

QByteArray MenuIcons::bundledPng(const QString &symbol)
{
    if (symbol.isEmpty() || symbol.contains(u'/'))
        return {};
    QFile file(QStringLiteral(":/narv/tray/menu/") + symbol + QStringLiteral(".png"));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
