#pragma once

#include <QByteArray>
#include <QImage>
#include <QString>

// How the status item's emblem and our own menu icons are drawn, with QtGui
// and QtSvg. The build runs it (make_tray_images.cpp) and the program only
// reads the result from its resources: the counting process links no QtGui.
// The tests draw with it again to compare.
namespace TrayImages {
// The icon font's glyph "narv" at `size` px, drawn from the SVG the font is
// built from (its viewBox is the font's em square), in the emblem's colour.
QImage emblem(const QString &svgPath, int size);
// The image as the StatusNotifierItem protocol's (iiay) wants its bytes:
// ARGB32, not premultiplied, each pixel's A, R, G, B in that order.
QByteArray networkArgb(const QImage &image);
// The menu icon's SVG at `size` px as PNG bytes, drawn as QIcon draws it.
// Needs a QGuiApplication.
QByteArray menuPng(const QString &svgPath, int size);
} // namespace TrayImages
