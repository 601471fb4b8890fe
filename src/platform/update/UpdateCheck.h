#pragma once

// Puts the update check behind the menu's "Check for Updates..." and arms its
// schedule. Builds made with -DNARV_UPDATE_CHECK=OFF, and Flatpak installs
// (Flatpak brings updates itself), have none: the menu item then only logs.
class UpdatePresenter;

namespace UpdateCheck {
// Outcomes go to `presenter` when there is one (the window process, when this
// process draws no windows), else to the update window's module.
void install(UpdatePresenter *presenter = nullptr);
} // namespace UpdateCheck
