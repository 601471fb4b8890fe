#pragma once

#include "services/LoginItem.h"

#include <QObject>

// Inside a Flatpak sandbox the autostart folder is not ours to write: the
// Background portal asks the desktop to start us at login instead.
class PortalLoginItem : public QObject, public LoginItem {
    Q_OBJECT
public:
    using QObject::QObject;
    // Sends the request; false when the portal could not be reached. The
    // user's answer arrives later and is logged when it is a refusal.
    bool setEnabled(bool enabled, QString *error) override;

private Q_SLOTS:
    void onResponse(uint response, const QVariantMap &results);
};
