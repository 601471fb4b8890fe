#pragma once

#include <QObject>

// Mouse and modifier-key activity anywhere on the desktop: motion, presses and
// releases of the left and right buttons, presses and releases of modifier
// keys. Ordinary keys, the wheel and other buttons are not activity. Sources
// that cannot tell them apart report what they can (see the README).
class InputActivitySource : public QObject {
    Q_OBJECT
public:
    using QObject::QObject;
    // Begins watching; false (after logging why) when that is not possible.
    virtual bool start() = 0;

Q_SIGNALS:
    // Can come hundreds of times a second; whoever listens must be cheap.
    void activity();
};
