#pragma once

#include "services/Notifier.h"

#include <memory>

// The heads-up's way to the desktop, chosen at the first notification (with
// the heads-up off nothing is asked of the bus): the session's notification
// server when the bus shows it, else the Notification portal, as inside a
// Flatpak sandbox that lets only the portals through.
class SessionNotifier : public Notifier {
    Q_OBJECT
public:
    using Notifier::Notifier;
    ~SessionNotifier() override;

    void show(const QString &summary, const QList<Action> &actions) override;
    void withdraw() override;

private:
    std::unique_ptr<Notifier> m_chosen;
};
