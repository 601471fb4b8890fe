#pragma once

#include <QString>

// Starts Narv when the user logs in. The desktop's mechanism (an autostart
// entry, a portal) sits behind this; the one in use is chosen at start-up.
//
// Whoever makes a login item owns it (the program's entry, a test); while it
// lives, the newest one made is the one the settings use (items go in scope
// order: the one before takes over again).
class LoginItem {
public:
    LoginItem();
    virtual ~LoginItem();
    LoginItem(const LoginItem &) = delete;
    LoginItem &operator=(const LoginItem &) = delete;

    // The login item in use, or nullptr when this desktop offers none we support.
    static LoginItem *current();

    // Registers (true) or unregisters (false). Returns false and fills `error`
    // when the desktop refused.
    virtual bool setEnabled(bool enabled, QString *error) = 0;

private:
    LoginItem *m_previous;
};
