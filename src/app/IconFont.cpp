#include "app/IconFont.h"

#include "app/Log.h"

#include <QFile>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QMutex>
#include <QMutexLocker>
#include <QPainter>
#include <QPainterPath>
#include <QRawFont>
#include <QtEndian>
#include <QtMath>

#include <mutex>

// iconfont.qrc is compiled into a static library, so nothing would pull its
// object file into the program; naming its initializer does. Q_INIT_RESOURCE
// has to be used outside any namespace.
static void initIconFontResource()
{
    Q_INIT_RESOURCE(iconfont);
}

namespace {

// The family name written into the font by tools/make-iconfont.
constexpr auto kFamily = "iconfont";

struct Registration {
    QMutex mutex;
    QString path = QStringLiteral(":/narv/iconfont.ttf");
    bool done = false;
    std::once_flag once;
};

Registration &registration()
{
    static Registration instance;
    return instance;
}

QString describeRefusal(const QString &path, qsizetype bytes)
{
    if (QGuiApplication::instance() == nullptr) {
        return QStringLiteral("no QGuiApplication exists yet, so there is no font database");
    }
    return QStringLiteral("QFontDatabase refused the %1 bytes read from %2 (not a font it can use)")
        .arg(bytes)
        .arg(path);
}

void registerFont()
{
    initIconFontResource();
    Registration &reg = registration();
    const QString path = [&] {
        QMutexLocker lock(&reg.mutex);
        return reg.path;
    }();
    const QString family = QString::fromLatin1(kFamily);

    QByteArray bytes;
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        bytes = file.readAll();
    }
    if (bytes.isEmpty()) {
        qFatal("Can not found font named: %s", qUtf8Printable(family));
    }

    const int id = QFontDatabase::addApplicationFontFromData(bytes);
    if (id == -1) {
        qFatal("Register Iconfont failed: %s", qUtf8Printable(describeRefusal(path, bytes.size())));
    }
    const QStringList families = QFontDatabase::applicationFontFamilies(id);
    if (!families.contains(family)) {
        QFontDatabase::removeApplicationFont(id);
        qFatal("Register Iconfont failed: %s holds the families [%s], not %s", qUtf8Printable(path),
               qUtf8Printable(families.join(QStringLiteral(", "))), qUtf8Printable(family));
    }

    {
        QMutexLocker lock(&reg.mutex);
        reg.done = true;
    }
    LOG_DEBUG(QStringLiteral("Registered icon font %1 from %2").arg(family, path));
}

// The font's ascender in design units, from its 'hhea' table. QRawFont::ascent()
// is rounded to whole pixels, which would shift small icons by up to a pixel.
std::optional<int> designAscent(const QRawFont &font)
{
    const QByteArray hhea = font.fontTable("hhea");
    if (hhea.size() < 8) {
        return std::nullopt;
    }
    return qFromBigEndian<qint16>(hhea.constData() + 4);
}

} // namespace

std::optional<IconFont> IconFont::fromRawValue(const QString &rawValue)
{
    if (rawValue.size() != 1) {
        return std::nullopt;
    }
    for (const Glyph glyph : {narv, narvgun}) {
        if (rawValue.front() == QChar(static_cast<char16_t>(glyph))) {
            return IconFont(glyph);
        }
    }
    return std::nullopt;
}

QString IconFont::rawValue() const
{
    return QString(QChar(static_cast<char16_t>(m_glyph)));
}

QString IconFont::name()
{
    std::call_once(registration().once, registerFont);
    return QString::fromLatin1(kFamily);
}

void IconFont::setResourcePath(const QString &path)
{
    Registration &reg = registration();
    QMutexLocker lock(&reg.mutex);
    if (reg.done) {
        qWarning("IconFont: the font is already registered; %s is not used", qUtf8Printable(path));
        return;
    }
    reg.path = path;
}

QString IconFont::resourcePath()
{
    Registration &reg = registration();
    QMutexLocker lock(&reg.mutex);
    return reg.path;
}

QImage IconFont::loadIcon(IconFont icon, qreal size, const QColor &color)
{
    const QString family = name();
    if (!(size > 0)) {
        return {};
    }
    const int side = qCeil(size);
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);

    QFont font(family);
    font.setHintingPreference(QFont::PreferNoHinting);
    QRawFont rawFont = QRawFont::fromFont(font);
    if (!rawFont.isValid() || rawFont.familyName() != family) {
        qWarning("IconFont: no usable font named %s", qUtf8Printable(family));
        return image;
    }
    rawFont.setPixelSize(size);
    const QList<quint32> glyphs = rawFont.glyphIndexesForString(icon.rawValue());
    if (glyphs.size() != 1 || glyphs.front() == 0) {
        qWarning("IconFont: %s has no glyph for U+%04X", qUtf8Printable(family),
                 unsigned(icon.glyph()));
        return image;
    }

    // The em square spans from the ascender down to the descender; placing the
    // baseline at the ascender lays that square over the image.
    const qreal baseline = [&] {
        const std::optional<int> ascent = designAscent(rawFont);
        return ascent ? size * *ascent / rawFont.unitsPerEm() : rawFont.ascent();
    }();

    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(color);
    painter.translate(0, baseline);
    painter.drawPath(rawFont.pathForGlyph(glyphs.front()));
    return image;
}
