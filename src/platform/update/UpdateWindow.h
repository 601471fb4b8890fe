#pragma once

#include "UpdatePresenter.h"

#include <QObject>
#include <QPointer>

#include <memory>

class QQmlEngine;
class QQuickWindow;

// The small window that tells the outcome of an update check: a newer release
// with its version and links to the release notes and the download, "You're
// up to date", or why the check failed. Drawn with Qt Quick (UpdateWindow.qml)
// so that it needs no QApplication; made on first use and reused.
class UpdateWindow : public QObject, public UpdatePresenter {
    Q_OBJECT
public:
    UpdateWindow();
    ~UpdateWindow() override;

    // The one window, made on first use.
    static UpdateWindow *ensure();
    // The window, once it exists.
    static UpdateWindow *instance();

    void showUpdate(const AppcastItem &item) override;
    void showUpToDate() override;
    void showFailure(const QString &reason) override;

    bool isVisible() const;
    void hide();
    QString heading() const;
    QString message() const;
    // The links under the message as HTML; empty when there are none.
    QString links() const;

private:
    void present(const QString &heading, const QString &message, const QString &links);

    std::unique_ptr<QQmlEngine> m_engine;
    QPointer<QQuickWindow> m_window;
};
