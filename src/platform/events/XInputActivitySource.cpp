#include "platform/events/XInputActivitySource.h"

#include "app/Log.h"

#include <QSocketNotifier>

#include <X11/Xlib.h>
#include <X11/extensions/XInput2.h>

namespace {
constexpr quint32 bit(int button)
{
    return button >= 0 && button < 32 ? quint32(1) << button : 0;
}
constexpr quint32 leftAndRight = bit(1) | bit(3);
// The wheel's clicks: up, down, left, right.
constexpr quint32 wheel = bit(4) | bit(5) | bit(6) | bit(7);

// Xlib's own handler ends the process on any error; while selecting, an error
// only means activity cannot be watched.
int g_selectError = 0;
int recordError(Display *, XErrorEvent *event)
{
    g_selectError = event->error_code;
    return 0;
}
} // namespace

std::unique_ptr<XInputActivitySource> XInputActivitySource::open()
{
    std::unique_ptr<XInputActivitySource> source(new XInputActivitySource);
    source->m_display = XOpenDisplay(nullptr);
    Display *display = source->m_display;
    if (!display) {
        LOG_NOTICE(QStringLiteral("mouse activity: cannot open the X display \"%1\"")
                       .arg(qEnvironmentVariable("DISPLAY")));
        return nullptr;
    }
    int event = 0;
    int error = 0;
    if (!XQueryExtension(display, "XInputExtension", &source->m_opcode, &event, &error)) {
        LOG_NOTICE(QStringLiteral("mouse activity: the X server has no XInput extension"));
        return nullptr;
    }
    // 2.1 or later: raw events come also while another program holds a grab.
    int major = 2;
    int minor = 2;
    if (XIQueryVersion(display, &major, &minor) != Success || major < 2) {
        LOG_NOTICE(QStringLiteral("mouse activity: the X server has XInput %1.%2, not 2")
                       .arg(major)
                       .arg(minor));
        return nullptr;
    }
    return source;
}

XInputActivitySource::~XInputActivitySource()
{
    delete m_socket;
    if (m_display)
        XCloseDisplay(m_display);
}

bool XInputActivitySource::start()
{
    unsigned char bits[XIMaskLen(XI_LASTEVENT)] = {};
    XISetMask(bits, XI_RawMotion);
    XISetMask(bits, XI_RawButtonPress);
    XISetMask(bits, XI_RawButtonRelease);
    XISetMask(bits, XI_RawKeyPress);
    XISetMask(bits, XI_RawKeyRelease);
    // Master devices only: every physical device reports through one, and
    // selecting all devices would bring each event twice.
    XIEventMask mask{XIAllMasterDevices, int(sizeof bits), bits};
    g_selectError = 0;
    const auto previousHandler = XSetErrorHandler(recordError);
    XISelectEvents(m_display, DefaultRootWindow(m_display), &mask, 1);
    XSync(m_display, False);
    XSetErrorHandler(previousHandler);
    if (g_selectError != 0) {
        LOG_WARNING(QStringLiteral("mouse activity: the X server refused raw events (error %1)")
                        .arg(g_selectError));
        return false;
    }
    readModifierKeys();

    m_socket = new QSocketNotifier(ConnectionNumber(m_display), QSocketNotifier::Read);
    connect(m_socket, &QSocketNotifier::activated, this, &XInputActivitySource::readEvents);
    m_rest.setSingleShot(true);
    m_rest.setInterval(restMilliseconds);
    connect(&m_rest, &QTimer::timeout, this, [this] {
        m_socket->setEnabled(true);
        readEvents();
    });
    LOG_INFO(QStringLiteral("mouse activity: XInput 2 raw events on %1")
                 .arg(QString::fromLocal8Bit(DisplayString(m_display))));
    // Anything that arrived with the replies above is already in Xlib's queue.
    readEvents();
    return true;
}

void XInputActivitySource::readModifierKeys()
{
    m_modifierKeys.reset();
    XModifierKeymap *map = XGetModifierMapping(m_display);
    if (!map)
        return;
    // Eight modifiers (Shift, Lock, Control, Mod1 to Mod5), each with up to
    // max_keypermod keys; a zero is an unused slot.
    for (int i = 0; i < 8 * map->max_keypermod; ++i) {
        if (const KeyCode code = map->modifiermap[i])
            m_modifierKeys.set(code);
    }
    XFreeModifiermap(map);
}

void XInputActivitySource::readEvents()
{
    // All of it, not one event: what Xlib has queued does not wake the
    // socket notifier again. One report per batch is enough.
    bool seen = false;
    while (XPending(m_display) > 0) {
        XEvent event;
        XNextEvent(m_display, &event);
        if (event.type == MappingNotify) {
            XRefreshKeyboardMapping(&event.xmapping);
            if (event.xmapping.request != MappingPointer)
                readModifierKeys();
            continue;
        }
        XGenericEventCookie *cookie = &event.xcookie;
        if (cookie->type != GenericEvent || cookie->extension != m_opcode)
            continue;
        ++m_rawEvents;
        // Once the batch counts, motion has nothing more to tell; button
        // events are still read, for the buttons held.
        if (seen && cookie->evtype == XI_RawMotion)
            continue;
        if (XGetEventData(m_display, cookie)) {
            if (isActivity(cookie->evtype, cookie->data))
                seen = true;
            XFreeEventData(m_display, cookie);
        }
    }
    if (seen) {
        m_socket->setEnabled(false);
        m_rest.start();
        Q_EMIT activity();
    }
}

bool XInputActivitySource::isActivity(int type, const void *rawEvent)
{
    const auto *raw = static_cast<const XIRawEvent *>(rawEvent);
    switch (type) {
    case XI_RawMotion: {
        // Valuators 0 and 1 are the pointer's x and y; smooth scrolling moves
        // only the scroll valuators.
        const bool moved = raw->valuators.mask_len > 0 && (raw->valuators.mask[0] & 0x3) != 0;
        const bool onlyOtherButtonHeld =
            (m_heldButtons & ~(leftAndRight | wheel)) != 0 && (m_heldButtons & leftAndRight) == 0;
        return moved && !onlyOtherButtonHeld;
    }
    case XI_RawButtonPress:
        m_heldButtons |= bit(raw->detail);
        return (bit(raw->detail) & leftAndRight) != 0;
    case XI_RawButtonRelease:
        m_heldButtons &= ~bit(raw->detail);
        return (bit(raw->detail) & leftAndRight) != 0;
    case XI_RawKeyPress:
    case XI_RawKeyRelease:
        return raw->detail >= 0 && raw->detail < 256 && m_modifierKeys.test(size_t(raw->detail));
    default:
        return false;
    }
}
