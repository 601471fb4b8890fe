#pragma once

#include "app/SystemEventController.h"

#include <QTimer>

// For desktop services that report only when the user goes idle and when they
// come back (Mutter's idle monitor, ext-idle-notify-v1), with a short idle
// threshold. Turns those two moments into activity: one when the user comes
// back, one when they go idle (their last input was a moment ago), and a pulse
// while they stay active, so the five-minute idle stop never fires under a
// user who does not pause.
class IdleWatchActivitySource : public InputActivitySource {
    Q_OBJECT
public:
    static constexpr int idleThresholdMs = 1000;
    static constexpr int pulseMs = 60 * 1000;

    explicit IdleWatchActivitySource(QObject *parent = nullptr);

    bool isUserActive() const { return m_pulse.isActive(); }

protected:
    void userBecameActive();
    void userBecameIdle();

private:
    QTimer m_pulse;
};
