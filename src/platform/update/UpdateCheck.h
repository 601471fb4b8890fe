#pragma once

// Puts the update check behind the menu's "Check for Updates..." and arms its
// schedule. Builds made with -DNARV_UPDATE_CHECK=OFF, and Flatpak installs
// (Flatpak brings updates itself), have none: the menu item then only logs.
namespace UpdateCheck {
void install();
} // namespace UpdateCheck
