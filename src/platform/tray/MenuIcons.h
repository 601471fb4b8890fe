#pragma once

#include <QByteArray>
#include <QString>

// The menu's symbol names ("stop.circle", "gearshape.circle", ...) as icons on
// this desktop: a freedesktop icon name where the icon theme has one, and our
// own drawing (resources/icons/menu) where it has not.
namespace MenuIcons {
// The freedesktop name standing for the symbol; empty when there is none.
QString themeName(const QString &symbol);
// True when the session's icon theme (IconTheme::current()) has the symbol's
// freedesktop name.
bool themeHas(const QString &symbol);
// Our own drawing of the symbol as a 16 px PNG, drawn while building
// (make_tray_images); empty for an unknown symbol.
QByteArray bundledPng(const QString &symbol);
} // namespace MenuIcons
