#pragma once

#include <QString>

// Starts Narv when the user logs in. The desktop's mechanism (an autostart
// entry, a portal) sits behind this; the one in use is chosen at start-up.
class LoginItem {
public:
    virtual ~LoginItem() = default;
    // Registers (true) or unregisters (false). Returns false and fills `error`
    // when the desktop refused.
    virtual bool setEnabled(bool enabled, QString *error) = 0;
};

namespace LoginItems {
// The login item in use, or nullptr when this desktop offers none we support.
LoginItem *current();
void setCurrent(LoginItem *item);
} // namespace LoginItems
