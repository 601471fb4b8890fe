#pragma once

#include "windows/WindowController.h"

#include <QList>
#include <QPointer>
#include <QString>

#include <memory>

class QQmlEngine;
class QQuickView;
class QScreen;
class QWindow;
class WindowHints;

// WindowController's windows, drawn with Qt Quick: one frameless BreakView
// window per screen and the About window.
//
// The QML engine is made when the first window is needed: most of the time
// Narv is a tray item and nothing more, and should cost no more than one.
// Break windows are found again by their title (the screen's name), made once
// and kept; between breaks they are only hidden, and like every window here
// they give their backing store back while hidden.
class QmlWindowBackend : public WindowBackend {
public:
    QmlWindowBackend();
    ~QmlWindowBackend() override;

    void prepareBreak() override;
    void showBreak() override;
    void closeBreak() override;
    void showAbout() override;
    void showPrefView() override;
    void showHistory() override;
    void showWaterView() override;
    void closeWaterView() override;
    bool isWaterViewVisible() const override;

    // The break window of a screen: the one titled with the screen's name, or a
    // new one when there is none yet.
    QQuickView *breakWindow(QScreen *screen);
    // Every break window made so far, also those whose screen has gone.
    QList<QQuickView *> breakWindows() const;
    QQuickView *aboutWindow() const;
    // The water panel's window: made on first use at the top-right corner of
    // the primary screen, then kept, hidden between reminders, where the user
    // last put it.
    QQuickView *waterWindow();
    // The settings window ("Settings"): made on first use in the middle of the
    // primary screen, then kept; closing it only hides it.
    QQuickView *preferencesWindow();
    // Null until the first window is made.
    QQmlEngine *engine() const;

    // An engine that finds the Narv.Windows module; every window of this backend
    // shares one.
    static std::unique_ptr<QQmlEngine> makeEngine();

    // How long a window takes to fade in or out.
    static constexpr int fadeMilliseconds = 2000;
    // The title of a screen's break window.
    static QString breakWindowTitle(const QScreen *screen);

private:
    QQmlEngine *ensureEngine();
    QQuickView *makeView(const QString &qmlFile);
    void show(QWindow *window);
    void close(QWindow *window);
    void releaseWindows();
    void showFloating(QWindow *window);
    // Shows the window the given way, fading it in where windows can fade.
    void fadeIn(QWindow *window, void (QWindow::*showIt)());

    std::unique_ptr<QQmlEngine> m_engine;
    std::unique_ptr<WindowHints> m_hints;
    QPointer<QQuickView> m_about;
    QPointer<QQuickView> m_water;
    QPointer<QQuickView> m_preferences;
    QPointer<QQuickView> m_history;
};
