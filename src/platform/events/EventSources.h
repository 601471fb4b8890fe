#pragma once

// Picks where screen locks and mouse activity come from, by what the session
// offers, and hands the sources to SystemEventController:
// - screen lock: logind and the screensaver services over D-Bus, always;
// - activity in an X11 session: XInput 2 raw events, or Mutter's idle
//   monitor when the X server lacks XInput 2;
// - activity in a Wayland session: Mutter's idle monitor on GNOME, else
//   ext-idle-notify-v1. (XInput under Xwayland sees only input meant for X
//   programs, so it is not used there.)
namespace EventSources {
void install();
} // namespace EventSources
