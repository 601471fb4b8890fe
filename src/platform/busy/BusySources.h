#pragma once

// Hands BreakDeferral what the session can tell: the inhibitors the desktop
// reports on the session bus (GNOME's session manager, the freedesktop
// power-management inhibitors that KDE and Xfce keep for ScreenSaver.Inhibit),
// and on X11 whether the focused window is full screen. Nothing is asked
// before a break is due with the setting on.
namespace BusySources {
void install();
} // namespace BusySources
