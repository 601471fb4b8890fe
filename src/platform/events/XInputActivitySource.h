#pragma once

#include "app/SystemEventController.h"

#include <QTimer>

#include <bitset>
#include <memory>

class QSocketNotifier;
struct _XDisplay;

// Activity on X11 from XInput 2 raw events, selected on the root window over a
// connection of our own, so they arrive whichever program has the pointer or
// a grab. Counted: pointer motion, presses and releases of buttons 1 and 3,
// presses and releases of modifier keys. Not counted: other keys, the wheel
// (buttons 4 to 7, and smooth-scroll motion), other buttons, and motion while
// only such another button is held.
//
// Once activity is reported, the socket is left alone for a second and what
// came meanwhile is read in one go: the idle stop is minutes away, so hearing
// of activity a second late costs nothing, while a moving mouse sends several
// hundred events a second, each of which would otherwise wake the program.
class XInputActivitySource : public InputActivitySource {
    Q_OBJECT
public:
    // Connects to the X server in $DISPLAY; null (after logging why) when
    // there is none or it lacks XInput 2.
    static std::unique_ptr<XInputActivitySource> open();
    ~XInputActivitySource() override;

    bool start() override;

    // Raw events read since start(), watched or not (the benchmark reads it).
    quint64 rawEventCount() const { return m_rawEvents; }

    // How long the socket rests after activity was reported.
    static constexpr int restMilliseconds = 1000;

private:
    XInputActivitySource() = default;
    void readEvents();
    void readModifierKeys();
    // Whether one raw event counts; keeps the held buttons up to date.
    bool isActivity(int type, const void *rawEvent);

    _XDisplay *m_display = nullptr;
    int m_opcode = 0;
    QSocketNotifier *m_socket = nullptr;
    std::bitset<256> m_modifierKeys; // by key code
    quint32 m_heldButtons = 0;       // bit n: button n is down
    quint64 m_rawEvents = 0;
    QTimer m_rest; // single shot: reading resumes when it goes off
};
