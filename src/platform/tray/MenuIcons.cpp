#include "MenuIcons.h"

#include "IconTheme.h"

#include <QBuffer>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QPixmap>

// menu.qrc sits in a static library: naming its initializer pulls it into
// the program. Q_INIT_RESOURCE has to be used outside any namespace.
static void initIconsResource()
{
    Q_INIT_RESOURCE(menu);
}

namespace {
QString bundledPath(const QString &symbol)
{
    static const bool initialized = (initIconsResource(), true);
    Q_UNUSED(initialized);
    return QStringLiteral(":/narv/icons/menu/") + symbol + QStringLiteral(".svg");
}
} // namespace

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

QByteArray MenuIcons::bundledPng(const QString &symbol, int size)
{
    if (symbol.isEmpty() || !QFile::exists(bundledPath(symbol)))
        return {};
    const QImage image = QIcon(bundledPath(symbol)).pixmap(size, size).toImage();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

QIcon MenuIcons::icon(const QString &symbol)
{
    // QIcon draws from the theme Qt's platform theme names: ask it the same.
    const QString name = themeName(symbol);
    if (!name.isEmpty() && QIcon::hasThemeIcon(name))
        return QIcon::fromTheme(name);
    if (symbol.isEmpty() || !QFile::exists(bundledPath(symbol)))
        return {};
    return QIcon(bundledPath(symbol));
}
