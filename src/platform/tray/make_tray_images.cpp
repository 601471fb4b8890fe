// make_tray_images OUTDIR EMBLEM.svg 16,22,32,48 MENU_SIZE menu.svg...
// Draws, while building, OUTDIR/emblem/<size>.argb (the (iiay) bytes of the
// status item's IconPixmap) and OUTDIR/menu/<symbol>.png (the menu's
// icon-data), so that the program needs neither QtGui nor QtSvg.

#include <QBuffer>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QPainter>
#include <QSaveFile>
#include <QSvgRenderer>
#include <QtEndian>

#include <cstdio>

namespace {
int fail(const QString &message)
{
    std::fprintf(stderr, "make_tray_images: %s\n", qPrintable(message));
    return 1;
}

bool write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    return (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() &&
            file.commit()) ||
           !fail(QStringLiteral("cannot write %1: %2").arg(path, file.errorString()));
}

// The icon font's glyph "narv", drawn from the SVG the font is built from
// (its viewBox is the font's em square) in a mid blue that panels show as it
// is on light and dark backgrounds alike; as the protocol's (iiay) wants it:
// not premultiplied, each pixel's A, R, G, B in that order.
QByteArray emblem(QSvgRenderer &svg, int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), QColor(0x3d, 0x9b, 0xd6));
    painter.end();
    image.convertTo(QImage::Format_ARGB32);
    QByteArray bytes;
    for (int y = 0; y < size; ++y) {
        for (int x = 0; x < size; ++x) {
            const quint32 pixel = qToBigEndian(quint32(image.pixel(x, y)));
            bytes.append(reinterpret_cast<const char *>(&pixel), 4);
        }
    }
    return bytes;
}
} // namespace

int main(int argc, char **argv)
{
    // QIcon draws through a QPixmap, which wants an application object; the
    // build machine may have no display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() < 5)
        return fail(QStringLiteral("usage: OUTDIR EMBLEM.svg SIZES MENU_SIZE MENU.svg..."));
    const QDir out(args.at(1));
    QSvgRenderer svg(args.at(2));
    if (!svg.isValid())
        return fail(QStringLiteral("cannot read ") + args.at(2));
    for (const QString &text : args.at(3).split(u',', Qt::SkipEmptyParts)) {
        const int size = text.toInt();
        if (size <= 0)
            return fail(QStringLiteral("not a size: ") + text);
        if (!write(out.filePath(QStringLiteral("emblem/%1.argb").arg(size)), emblem(svg, size)))
            return 1;
    }
    const int menuSize = args.at(4).toInt();
    for (const QString &path : args.mid(5)) {
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        // Fails when Qt's SVG icon engine is not installed: better no build
        // than a menu of blank icons.
        if (!QIcon(path).pixmap(menuSize, menuSize).toImage().save(&buffer, "PNG") || png.isEmpty())
            return fail(QStringLiteral("cannot draw ") + path);
        const QString symbol = QFileInfo(path).completeBaseName();
        if (!write(out.filePath(QStringLiteral("menu/%1.png").arg(symbol)), png))
            return 1;
    }
    return 0;
}
