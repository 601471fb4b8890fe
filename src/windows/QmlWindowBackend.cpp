#include "windows/QmlWindowBackend.h"

#include "app/AppInfo.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "platform/compositor/Compositor.h"
#include "platform/windowhints/WindowHints.h"
#include "water/WaterPanel.h"

#include <QGuiApplication>
#include <QPalette>
#include <QPropertyAnimation>
#include <QQmlEngine>
#include <QQuickView>
#include <QSGRendererInterface>
#include <QScreen>
#include <QSurfaceFormat>

#include <functional>
#include <utility>

// Generated with the Narv.Windows module. The library is static, so nothing
// would pull the module's type registration into the program without this
// reference.
void qml_register_types_Narv_Windows();
// The same for the water panel's module, Narv.Water.
void qml_register_types_Narv_Water();
// And for the settings window's, Narv.Preferences.
void qml_register_types_Narv_Preferences();
void qml_register_types_Narv_History();

namespace {

// Marks the windows made as break windows, so that no other window that happens
// to carry a screen's name as its title is taken for one.
constexpr auto kBreakWindowName = "narv-break-window";
constexpr auto kFadeName = "narv-fade";

QString moduleUrl(const QString &file)
{
    return QStringLiteral("qrc:/Narv/Windows/") + file;
}

// The window's one opacity animation, made on first use.
QPropertyAnimation *fadeOf(QWindow *window)
{
    auto *fade = window->findChild<QPropertyAnimation *>(QLatin1String(kFadeName),
                                                         Qt::FindDirectChildrenOnly);
    if (!fade) {
        fade = new QPropertyAnimation(window, "opacity", window);
        fade->setObjectName(QLatin1String(kFadeName));
        fade->setDuration(QmlWindowBackend::fadeMilliseconds);
    }
    return fade;
}

// Qt Quick's software renderer keeps a window's backing store (for a 1280×800
// screen, 4 MiB of memory shared with the X server) until the window itself is
// deleted. The break windows and the panels are kept from one showing to the
// next, so hidden they would hold it for the rest of the program's life. Drawn
// once more at one pixel while hidden, a window's store is cut down to that
// size; the first frame of its next showing grows it back. The window, its X
// window and its scene stay as they are.
void releaseBackingStore(QQuickWindow *window)
{
    // Shown again before this came round: it needs its store.
    if (window->isVisible())
        return;
    // The native window is gone (closed by something that got past
    // closeLikeItsOwn()): its store went with it, and drawing now would make a
    // new one for a surface that no longer exists, which the Wayland platform
    // does not survive.
    if (!window->handle())
        return;
    // The other renderers keep their buffers elsewhere, and drawing a hidden
    // window there would mean setting up a whole offscreen pipeline.
    if (window->rendererInterface()->graphicsApi() != QSGRendererInterface::Software)
        return;
    const QSize size = window->size();
    if (size == QSize(1, 1))
        return;
    window->resize(1, 1);
    window->grabWindow();
    window->resize(size);
}

// Releases the window's backing store whenever it is hidden, however that
// happened (a fade's end, the window manager's close button). Queued: the
// window is still on its way out while it reports the change.
void releaseWhenHidden(QQuickWindow *window)
{
    QObject::connect(
        window, &QWindow::visibleChanged, window,
        [window](bool visible) {
            if (!visible)
                releaseBackingStore(window);
        },
        Qt::QueuedConnection);
}

// Set once the application is asked to quit. Qt then closes every window
// first, and a window that kept itself open would call the quit off.
bool g_quitting = false;

class QuitWatch : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Quit)
            g_quitting = true;
        return false;
    }
};

// Turns a close from outside into the window's own way of going. Its close
// button, the compositor's or window manager's close (a dock's menu, Alt+F4)
// and QWindow::close() from a shortcut all arrive as a QCloseEvent; accepted,
// it would make Qt destroy the native window, and with it what the window is
// kept for: the next showing, the backing store released above.
class CloseLikeItsOwn : public QObject {
public:
    CloseLikeItsOwn(QWindow *window, std::function<void()> ownClose)
        : QObject(window), m_ownClose(std::move(ownClose))
    {
        window->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::Close || g_quitting)
            return false;
        event->ignore();
        if (m_ownClose)
            m_ownClose();
        return true;
    }

private:
    std::function<void()> m_ownClose;
};

void closeLikeItsOwn(QWindow *window, std::function<void()> ownClose)
{
    new CloseLikeItsOwn(window, std::move(ownClose));
}

bool isFadingOut(QWindow *window)
{
    auto *fade = window->findChild<QPropertyAnimation *>(QLatin1String(kFadeName),
                                                         Qt::FindDirectChildrenOnly);
    return fade && fade->state() == QAbstractAnimation::Running && fade->endValue() == 0.0;
}

} // namespace

QmlWindowBackend::QmlWindowBackend()
{
    // Every window carries the desktop file's id (the Wayland app id), so that
    // docks and the shell show Narv's name and icon for it.
    QGuiApplication::setDesktopFileName(AppInfo::identifier());
    // The windows and the engine must go while the application object still
    // exists; the backend itself lives until static destruction.
    if (auto *app = QCoreApplication::instance()) {
        QObject::connect(app, &QCoreApplication::aboutToQuit, app, [this] { releaseWindows(); });
        static bool watching = false;
        if (!std::exchange(watching, true))
            app->installEventFilter(new QuitWatch(app));
    }
}

QmlWindowBackend::~QmlWindowBackend()
{
    if (QCoreApplication::instance())
        releaseWindows();
}

void QmlWindowBackend::releaseWindows()
{
    qDeleteAll(breakWindows());
    delete m_about;
    delete m_water;
    delete m_preferences;
    delete m_history;
    m_engine.reset();
}

QString QmlWindowBackend::breakWindowTitle(const QScreen *screen)
{
    if (!screen->name().isEmpty())
        return screen->name();
    // Some platforms leave screens unnamed; the place on the desktop tells
    // them apart instead.
    const QRect g = screen->geometry();
    return QStringLiteral("screen %1,%2").arg(g.x()).arg(g.y());
}

QQuickView *QmlWindowBackend::aboutWindow() const
{
    return m_about;
}

QQmlEngine *QmlWindowBackend::engine() const
{
    return m_engine.get();
}

std::unique_ptr<QQmlEngine> QmlWindowBackend::makeEngine()
{
    volatile auto keepRegistration = &qml_register_types_Narv_Windows;
    Q_UNUSED(keepRegistration);
    volatile auto keepWaterRegistration = &qml_register_types_Narv_Water;
    Q_UNUSED(keepWaterRegistration);
    volatile auto keepPreferencesRegistration = &qml_register_types_Narv_Preferences;
    Q_UNUSED(keepPreferencesRegistration);
    volatile auto keepHistoryRegistration = &qml_register_types_Narv_History;
    Q_UNUSED(keepHistoryRegistration);
    // Qt Quick's software renderer: a break screen is text on a plain
    // background, and loading the OpenGL stack would multiply what the program
    // keeps resident for the rest of its life (see bench/results.md). Qt's own
    // QT_QUICK_BACKEND still decides when it is set.
    if (qEnvironmentVariableIsEmpty("QT_QUICK_BACKEND"))
        QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    auto engine = std::make_unique<QQmlEngine>();
    engine->addImportPath(QStringLiteral("qrc:/"));
    return engine;
}

QQmlEngine *QmlWindowBackend::ensureEngine()
{
    if (!m_engine) {
        LOG_INFO(QStringLiteral("create QML engine"));
        m_engine = makeEngine();
        m_hints = WindowHints::forSession();
    }
    return m_engine.get();
}

QQuickView *QmlWindowBackend::makeView(const QString &qmlFile)
{
    auto *view = new QQuickView(ensureEngine(), nullptr);
    view->setResizeMode(QQuickView::SizeRootObjectToView);
    view->setColor(QGuiApplication::palette().color(QPalette::Window));
    view->setSource(QUrl(moduleUrl(qmlFile)));
    releaseWhenHidden(view);
    if (view->status() != QQuickView::Ready) {
        // An empty window is still better than none: it covers the screen and
        // the break ends on time, since the countdown does not depend on it.
        for (const QQmlError &error : view->errors())
            LOG_ERROR(QStringLiteral("%1: %2").arg(qmlFile, error.toString()));
    }
    return view;
}

QList<QQuickView *> QmlWindowBackend::breakWindows() const
{
    QList<QQuickView *> windows;
    for (QWindow *window : QGuiApplication::topLevelWindows()) {
        if (window->objectName() == QLatin1String(kBreakWindowName))
            windows.append(static_cast<QQuickView *>(window));
    }
    return windows;
}

QQuickView *QmlWindowBackend::breakWindow(QScreen *screen)
{
    const QString title = breakWindowTitle(screen);
    for (QQuickView *window : breakWindows()) {
        if (window->title() == title)
            return window;
    }
    QQuickView *window = makeView(QStringLiteral("BreakView.qml"));
    window->setObjectName(QLatin1String(kBreakWindowName));
    window->setTitle(title);
    window->setFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    window->setScreen(screen);
    window->setGeometry(screen->geometry());
    // The break ends on time or by "Skip", not by the desktop's close.
    closeLikeItsOwn(window, [title] {
        LOG_NOTICE(QStringLiteral("the desktop asked to close break window %1; it stays until "
                                  "the break ends")
                       .arg(title));
    });
    LOG_INFO(QStringLiteral("create break window %1").arg(title));
    return window;
}

void QmlWindowBackend::show(QWindow *window)
{
    fadeIn(window, &QWindow::showFullScreen);
}

void QmlWindowBackend::fadeIn(QWindow *window, void (QWindow::*showIt)())
{
    m_hints->setOnAllDesktops(window);
    if (!m_hints->canFade()) {
        (window->*showIt)();
        window->raise();
        return;
    }
    QPropertyAnimation *fade = fadeOf(window);
    // A window still fading out must not be hidden by that fade's end now that
    // it is wanted again.
    fade->stop();
    QObject::disconnect(fade, &QAbstractAnimation::finished, nullptr, nullptr);
    if (!window->isVisible())
        window->setOpacity(0.0);
    (window->*showIt)();
    window->raise();
    fade->setStartValue(window->opacity());
    fade->setEndValue(1.0);
    fade->start();
}

void QmlWindowBackend::close(QWindow *window)
{
    // Closing a hidden window, or one already on its way out, changes nothing:
    // closePrompt() runs once per break view when a break ends.
    if (!window->isVisible() || isFadingOut(window))
        return;
    if (!m_hints->canFade()) {
        window->hide();
        return;
    }
    QPropertyAnimation *fade = fadeOf(window);
    fade->stop();
    fade->setStartValue(window->opacity());
    fade->setEndValue(0.0);
    QObject::connect(fade, &QAbstractAnimation::finished, window, &QWindow::hide,
                     Qt::SingleShotConnection);
    fade->start();
}

void QmlWindowBackend::showBreak()
{
    // The primary screen's window comes last: Wayland compositors decide the
    // focus themselves and give it to the window that appeared last.
    QList<QScreen *> screens = QGuiApplication::screens();
    if (screens.removeOne(QGuiApplication::primaryScreen()))
        screens.append(QGuiApplication::primaryScreen());
    QWindow *focus = nullptr;
    for (QScreen *screen : std::as_const(screens)) {
        QQuickView *window = breakWindow(screen);
        // The screen may have moved or changed size since the last break.
        window->setScreen(screen);
        window->setGeometry(screen->geometry());
        show(window);
        focus = window;
    }
    // Keys typed during the break go to the break window, not to the window
    // below it (a Return there could send a half-written message).
    if (focus)
        focus->requestActivate();
}

void QmlWindowBackend::prepareBreak()
{
    // Made and laid out now, shown at the break.
    for (QScreen *screen : QGuiApplication::screens()) {
        QQuickView *window = breakWindow(screen);
        window->setScreen(screen);
        window->setGeometry(screen->geometry());
    }
}

void QmlWindowBackend::closeBreak()
{
    // Every screen gets its window here too, even one that was never shown
    // (a screen lock outside a break): made now, it is ready for the next break.
    for (QScreen *screen : QGuiApplication::screens())
        breakWindow(screen);
    // A window whose screen went away during the break has moved to another
    // screen and has to go as well, so close them all, not only the screens'.
    for (QQuickView *window : breakWindows())
        close(window);
}

void QmlWindowBackend::showAbout()
{
    if (!m_about) {
        m_about = makeView(QStringLiteral("AboutView.qml"));
        m_about->setTitle(NARV_TR("About Narv"));
        m_about->setFlags(Qt::Dialog);
        closeLikeItsOwn(m_about, [window = m_about.data()] { window->hide(); });
        const QSize size =
            m_about->initialSize().isValid() ? m_about->initialSize() : QSize(320, 280);
        m_about->setMinimumSize(size);
        m_about->setMaximumSize(size);
        m_about->resize(size);
        if (QScreen *screen = QGuiApplication::primaryScreen()) {
            const QRect area = screen->availableGeometry();
            m_about->setPosition(area.center() - QPoint(size.width() / 2, size.height() / 2));
        }
    }
    m_about->show();
    m_about->raise();
    m_about->requestActivate();
}

QQuickView *QmlWindowBackend::preferencesWindow()
{
    if (m_preferences)
        return m_preferences;
    m_preferences = new QQuickView(ensureEngine(), nullptr);
    m_preferences->setTitle(NARV_TR("Settings"));
    m_preferences->setFlags(Qt::Window);
    m_preferences->setColor(QGuiApplication::palette().color(QPalette::Window));
    m_preferences->setResizeMode(QQuickView::SizeRootObjectToView);
    m_preferences->setSource(QUrl(QStringLiteral("qrc:/Narv/Preferences/PreferencesView.qml")));
    releaseWhenHidden(m_preferences);
    // Its close button and Ctrl+W only hide it: it comes back as the user left it.
    closeLikeItsOwn(m_preferences, [window = m_preferences.data()] { window->hide(); });
    for (const QQmlError &error : m_preferences->errors())
        LOG_ERROR(QStringLiteral("PreferencesView.qml: %1").arg(error.toString()));

    m_preferences->setMinimumSize(QSize(480, 400));
    QSize size = m_preferences->initialSize().expandedTo(QSize(480, 400));
    if (QScreen *screen = QGuiApplication::primaryScreen()) {
        const QRect area = screen->availableGeometry();
        size = size.boundedTo(area.size()).expandedTo(QSize(480, 400));
        m_preferences->setScreen(screen);
        m_preferences->setPosition(area.center() - QPoint(size.width() / 2, size.height() / 2));
    }
    m_preferences->resize(size);
    LOG_INFO(QStringLiteral("create preferences window"));
    return m_preferences;
}

void QmlWindowBackend::showPrefView()
{
    LOG_INFO(QStringLiteral("show preferences"));
    // Made once; afterwards it is only shown again (or raised) where the user
    // left it.
    QQuickView *window = preferencesWindow();
    window->show();
    window->raise();
    window->requestActivate();
}

void QmlWindowBackend::showHistory()
{
    if (!m_history) {
        m_history = new QQuickView(ensureEngine(), nullptr);
        m_history->setTitle(NARV_TR("History"));
        m_history->setFlags(Qt::Window);
        m_history->setColor(QGuiApplication::palette().color(QPalette::Window));
        m_history->setResizeMode(QQuickView::SizeRootObjectToView);
        m_history->setSource(QUrl(QStringLiteral("qrc:/Narv/History/HistoryView.qml")));
        releaseWhenHidden(m_history);
        closeLikeItsOwn(m_history, [window = m_history.data()] { window->hide(); });
        for (const QQmlError &error : m_history->errors())
            LOG_ERROR(QStringLiteral("HistoryView.qml: %1").arg(error.toString()));
        const QSize size = m_history->initialSize().expandedTo(QSize(480, 420));
        m_history->setMinimumSize(QSize(420, 380));
        m_history->resize(size);
        if (QScreen *screen = QGuiApplication::primaryScreen()) {
            const QRect area = screen->availableGeometry();
            m_history->setPosition(area.center() - QPoint(size.width() / 2, size.height() / 2));
        }
    }
    LOG_INFO(QStringLiteral("show history"));
    m_history->show();
    m_history->raise();
    m_history->requestActivate();
}

QQuickView *QmlWindowBackend::waterWindow()
{
    if (m_water)
        return m_water;
    // See-through only where a compositor shows what lies behind: elsewhere
    // the transparent parts of the window would come out black.
    const bool translucent = Compositor::isRunning();
    m_water = new QQuickView(ensureEngine(), nullptr);
    m_water->setTitle(NARV_TR("Water Reminder"));
    // No title bar: the panel is moved by its background and closed by its
    // buttons. It floats above ordinary windows, and as a tool window it
    // stays out of taskbars where the session says so (X11).
    m_water->setFlags(Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint);
    if (translucent) {
        QSurfaceFormat format = m_water->format();
        format.setAlphaBufferSize(8);
        m_water->setFormat(format);
        m_water->setColor(Qt::transparent);
    } else {
        m_water->setColor(QGuiApplication::palette().color(QPalette::Window));
    }
    m_water->setResizeMode(QQuickView::SizeRootObjectToView);
    m_water->setInitialProperties({{QStringLiteral("translucent"), translucent}});
    m_water->setSource(QUrl(QStringLiteral("qrc:/Narv/Water/WaterView.qml")));
    releaseWhenHidden(m_water);
    // Closed by the desktop, the panel goes as on Escape or its own close
    // button: faded out, nothing armed.
    closeLikeItsOwn(m_water, [] { WindowController::closeWaterView(); });
    for (const QQmlError &error : m_water->errors())
        LOG_ERROR(QStringLiteral("WaterView.qml: %1").arg(error.toString()));

    const QSize size = WaterPanel::size();
    m_water->setMinimumSize(size);
    m_water->setMaximumSize(size);
    m_water->resize(size);
    if (QScreen *screen = QGuiApplication::primaryScreen()) {
        // The top-right corner of the primary screen, below a top panel.
        const QRect area = screen->availableGeometry();
        m_water->setScreen(screen);
        m_water->setPosition(area.x() + area.width() - size.width(), area.y());
    }
    LOG_INFO(QStringLiteral("create water window"));
    return m_water;
}

void QmlWindowBackend::showFloating(QWindow *window)
{
    fadeIn(window, &QWindow::show);
}

void QmlWindowBackend::showWaterView()
{
    QQuickView *window = waterWindow();
    showFloating(window);
    window->requestActivate();
}

void QmlWindowBackend::closeWaterView()
{
    if (m_water)
        close(m_water);
}

bool QmlWindowBackend::isWaterViewVisible() const
{
    // A panel on its way out counts as gone: the menu's water item then
    // brings it back instead of closing it a second time.
    return m_water && m_water->isVisible() && !isFadingOut(m_water);
}
