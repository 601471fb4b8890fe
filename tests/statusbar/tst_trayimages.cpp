// The emblem and the menu icons the build drew (make_tray_images) are what
// QtGui draws from the same SVGs here and now, in the program's resources
// under the names the status item reads; and the emblem is the icon font's
// glyph.

#include "MenuIcons.h"
#include "StatusNotifierItem.h"
#include "TrayImages.h"
#include "app/IconFont.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QTest>

class TestTrayImages : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void emblemAsDrawnNow();
    void emblemIsTheIconFontGlyph();
    void menuIconsAsDrawnNow();
};

void TestTrayImages::emblemAsDrawnNow()
{
    QList<int> sizes;
    for (const DBusImage &image : StatusNotifierItem::emblemPixmaps()) {
        QCOMPARE(image.height, image.width);
        // Byte for byte: any slip in byte order or premultiplication shows.
        const QByteArray now = TrayImages::networkArgb(
            TrayImages::emblem(QStringLiteral(NARV_EMBLEM_SVG), image.width));
        QVERIFY2(image.data == now, qPrintable(QString::number(image.width)));
        sizes.append(image.width);
    }
    QCOMPARE(sizes, (QList<int>{16, 22, 32, 48}));
}

void TestTrayImages::emblemIsTheIconFontGlyph()
{
    QByteArray argb; // A R G B bytes
    for (const DBusImage &image : StatusNotifierItem::emblemPixmaps()) {
        if (image.width == 32)
            argb = image.data;
    }
    QCOMPARE(argb.size(), 32 * 32 * 4);

    const QImage glyph =
        IconFont::loadIcon(IconFont::narv, 32, Qt::black).convertToFormat(QImage::Format_ARGB32);
    long difference = 0;
    int covered = 0;
    for (int y = 0; y < 32; ++y) {
        for (int x = 0; x < 32; ++x) {
            const int drawn = quint8(argb.at((y * 32 + x) * 4));
            const int font = qAlpha(glyph.pixel(x, y));
            difference += qAbs(drawn - font);
            covered += font > 128 ? 1 : 0;
        }
    }
    QVERIFY(covered > 100);
    // The same outline, antialiased a little differently at the edges.
    QVERIFY2(difference / (32 * 32) < 8, qPrintable(QString::number(difference / (32 * 32))));
    // In the emblem's blue wherever it is solid.
    const QRgb solid = qRgba(0x3d, 0x9b, 0xd6, 0xff);
    int blue = 0;
    for (int i = 0; i < argb.size(); i += 4) {
        if (quint8(argb.at(i)) == 0xff) {
            QCOMPARE(
                qRgba(quint8(argb.at(i + 1)), quint8(argb.at(i + 2)), quint8(argb.at(i + 3)), 0xff),
                solid);
            ++blue;
        }
    }
    QVERIFY(blue > 100);
}

void TestTrayImages::menuIconsAsDrawnNow()
{
    const QFileInfoList svgs = QDir(QStringLiteral(NARV_MENU_ICONS_DIR))
                                   .entryInfoList({QStringLiteral("*.svg")}, QDir::Files);
    QVERIFY(svgs.size() >= 8);
    for (const QFileInfo &svg : svgs) {
        const QString symbol = svg.completeBaseName();
        const QImage built = QImage::fromData(MenuIcons::bundledPng(symbol), "PNG");
        QVERIFY2(!built.isNull(), qPrintable(symbol));
        QCOMPARE(built.size(), QSize(16, 16));
        const QImage now = QImage::fromData(TrayImages::menuPng(svg.absoluteFilePath(), 16), "PNG");
        QVERIFY2(built == now, qPrintable(symbol));
    }
    QVERIFY(MenuIcons::bundledPng(QStringLiteral("no.such.symbol")).isEmpty());
}

int main(int argc, char **argv)
{
    QGuiApplication app(argc, argv);
    TestTrayImages test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_trayimages.moc"
