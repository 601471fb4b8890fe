#pragma once

#include <QColor>
#include <QHashFunctions>
#include <QImage>
#include <QString>

#include <cstddef>
#include <functional>
#include <optional>

// The glyphs of Narv's own icon font (resources/iconfont/iconfont.ttf, built by
// tools/make-iconfont). A value names one glyph; its raw value is the glyph's
// one-character text in the font's private-use code points.
//
//   IconFont::loadIcon(IconFont::narv, 16)          the tray emblem
//   QFont font(IconFont::name()); label->setText(IconFont(IconFont::narvgun).rawValue());
class IconFont {
public:
    // Each enumerator is the glyph's code point.
    enum Glyph : char16_t {
        narv = 0xE64B,    // the emblem: a narwhal with its tusk
        narvgun = 0xE64C, // the striker: the tusk alone
    };

    constexpr IconFont(Glyph glyph) : m_glyph(glyph) {}

    // The glyph for a raw value: exactly one of the glyphs' one-character texts,
    // anything else gives none.
    static std::optional<IconFont> fromRawValue(const QString &rawValue);

    constexpr Glyph glyph() const { return m_glyph; }
    QString rawValue() const;

    friend constexpr bool operator==(IconFont, IconFont) = default;

    // The family of the font. The first call loads the font from the resources
    // and registers it with QFontDatabase (once per process, from any thread; a
    // QGuiApplication must exist). A font that is missing or that the database
    // refuses is fatal: the icons would draw as empty boxes.
    static QString name();

    // Where name() loads the font from, ":/narv/iconfont.ttf" unless changed.
    // Only has an effect before the first call of name().
    static void setResourcePath(const QString &path);
    static QString resourcePath();

    // A square image, transparent but for the glyph drawn in the font name() at
    // pixel size `size`; its side is `size` (rounded up to whole pixels). The
    // font's em square covers the image, so the glyph fills it without being
    // cut off. Every call draws a new image. A size that is not positive gives a
    // null image.
    static QImage loadIcon(IconFont icon, qreal size, const QColor &color = Qt::black);

private:
    Glyph m_glyph;
};

inline size_t qHash(IconFont icon, size_t seed = 0) noexcept
{
    return ::qHash(static_cast<char16_t>(icon.glyph()), seed);
}

template <> struct std::hash<IconFont> {
    size_t operator()(IconFont icon) const noexcept
    {
        return std::hash<char16_t>{}(static_cast<char16_t>(icon.glyph()));
    }
};
