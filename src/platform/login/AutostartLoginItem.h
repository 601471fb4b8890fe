#pragma once

#include "services/LoginItem.h"

// An autostart entry, $XDG_CONFIG_HOME/autostart/app.narv.Narv.desktop, that
// desktops following the XDG autostart rules run at login.
class AutostartLoginItem : public LoginItem {
public:
    // `executable` is what the entry starts: the running binary, or the
    // AppImage it was started from.
    explicit AutostartLoginItem(QString executable);

    static QString entryPath();
    // The program to start at login for this process.
    static QString currentExecutable();

    bool setEnabled(bool enabled, QString *error) override;
    // The text written to the entry.
    QString entryText() const;

private:
    QString m_executable;
};
