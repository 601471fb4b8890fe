#pragma once

// Puts the update check behind the menu's "Check for Updates..." and arms its
// schedule. Builds made with -DNARV_UPDATE_CHECK=OFF, and Flatpak installs
// (Flatpak brings updates itself), have none: the menu item then only logs.
class UpdatePresenter;

namespace UpdateCheck {
// Outcomes go to `presenter` when there is one (the window process, when this
// process draws no windows), else to the update window's module.
void install(UpdatePresenter *presenter = nullptr);

// `narv --fetch-update-feed <url>`: a process of a moment that fetches the
// feed with the update module, writes it to its standard output (or why it
// could not to its standard error) and exits, 0 when it has the feed. Each
// check runs one, so QtNetwork and TLS never stay in the counting process.
inline constexpr const char *fetchOption = "--fetch-update-feed";
int runFetch(int &argc, char **argv);
} // namespace UpdateCheck
