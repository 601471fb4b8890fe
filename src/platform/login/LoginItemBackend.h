#pragma once

#include <memory>

class LoginItem;

namespace LoginItemBackend {
// The login item that fits this session: the Background portal inside a
// Flatpak sandbox, an XDG autostart entry everywhere else.
std::unique_ptr<LoginItem> create();
bool insideFlatpak();
} // namespace LoginItemBackend
