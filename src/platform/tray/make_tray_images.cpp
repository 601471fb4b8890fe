// Draws the status item's emblem and our own menu icons while building, so
// that the program only reads bytes from its resources and needs no QtGui:
//
//   make_tray_images --out DIR --emblem narv.svg --emblem-sizes 16,22,32,48
//                    --menu-size 16 stop.circle.svg ...
//
// writes DIR/emblem/<size>.argb (the (iiay) bytes StatusNotifierItem sends)
// and DIR/menu/<symbol>.png (what DBusMenuExporter sends as icon-data).

#include "TrayImages.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QSaveFile>
#include <QSvgRenderer>

#include <cstdio>

namespace {
bool write(const QString &path, const QByteArray &bytes)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit())
        return true;
    std::fprintf(stderr, "make_tray_images: cannot write %s: %s\n", qPrintable(path),
                 qPrintable(file.errorString()));
    return false;
}

int fail(const QString &message)
{
    std::fprintf(stderr, "make_tray_images: %s\n", qPrintable(message));
    return 1;
}
} // namespace

int main(int argc, char **argv)
{
    // QIcon draws through a QPixmap, which wants an application object; the
    // build machine may have no display.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);

    QCommandLineParser parser;
    const QCommandLineOption out(QStringLiteral("out"), QStringLiteral("Output folder."),
                                 QStringLiteral("dir"));
    const QCommandLineOption emblem(QStringLiteral("emblem"), QStringLiteral("The emblem's SVG."),
                                    QStringLiteral("svg"));
    const QCommandLineOption emblemSizes(QStringLiteral("emblem-sizes"),
                                         QStringLiteral("Comma-separated sizes, px."),
                                         QStringLiteral("sizes"));
    const QCommandLineOption menuSize(QStringLiteral("menu-size"),
                                      QStringLiteral("The menu icons' size, px."),
                                      QStringLiteral("size"));
    parser.addOptions({out, emblem, emblemSizes, menuSize});
    parser.addPositionalArgument(QStringLiteral("menu-svgs"), QStringLiteral("Menu icons."));
    parser.process(app);
    if (!parser.isSet(out) || !parser.isSet(emblem))
        return fail(QStringLiteral("--out and --emblem are needed"));
    const QDir dir(parser.value(out));

    if (!QSvgRenderer(parser.value(emblem)).isValid())
        return fail(QStringLiteral("cannot read ") + parser.value(emblem));
    for (const QString &text : parser.value(emblemSizes).split(u',', Qt::SkipEmptyParts)) {
        bool ok = false;
        const int size = text.toInt(&ok);
        if (!ok || size <= 0)
            return fail(QStringLiteral("not a size: ") + text);
        const QImage image = TrayImages::emblem(parser.value(emblem), size);
        if (!write(dir.filePath(QStringLiteral("emblem/%1.argb").arg(size)),
                   TrayImages::networkArgb(image)))
            return 1;
    }

    const int size = parser.value(menuSize).toInt();
    for (const QString &svg : parser.positionalArguments()) {
        // Empty when Qt's SVG icon engine is not installed: better no build
        // than a menu of blank icons.
        const QByteArray png = TrayImages::menuPng(svg, size);
        if (png.isEmpty())
            return fail(QStringLiteral("cannot draw ") + svg);
        if (!write(dir.filePath(QStringLiteral("menu/") + QFileInfo(svg).completeBaseName() +
                                QStringLiteral(".png")),
                   png))
            return 1;
    }
    return 0;
}
