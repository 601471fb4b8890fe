#include "TrayImages.h"

#include <QBuffer>
#include <QColor>
#include <QIcon>
#include <QPainter>
#include <QPixmap>
#include <QSvgRenderer>
#include <QtEndian>

namespace {
// A mid blue: panels draw the pixmap as it is, on light and dark backgrounds alike.
const QColor emblemColor(0x3d, 0x9b, 0xd6);
} // namespace

QImage TrayImages::emblem(const QString &svgPath, int size)
{
    QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QSvgRenderer svg(svgPath);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    svg.render(&painter);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), emblemColor);
    return image;
}

QByteArray TrayImages::networkArgb(const QImage &source)
{
    const QImage image = source.convertToFormat(QImage::Format_ARGB32);
    QByteArray bytes(qsizetype(image.width()) * image.height() * 4, Qt::Uninitialized);
    auto *out = reinterpret_cast<quint32 *>(bytes.data());
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const quint32 *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            *out++ = qToBigEndian(line[x]);
    }
    return bytes;
}

QByteArray TrayImages::menuPng(const QString &svgPath, int size)
{
    const QImage image = QIcon(svgPath).pixmap(size, size).toImage();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}
