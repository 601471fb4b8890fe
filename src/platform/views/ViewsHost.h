#pragma once

#include <QObject>
#include <QPointer>
#include <QVariantList>

class MessageChannel;
class QmlWindowBackend;
class QQuickView;
class UpdatePresenter;

// The window process's side of ViewsProcess: runs what the counting process
// asks of the windows, keeps the states the views show as they are sent, and
// tells the counting process which windows are on the screen each time that
// may have changed.
class ViewsHost : public QObject {
    Q_OBJECT
public:
    ViewsHost(MessageChannel &channel, QmlWindowBackend &windows, QObject *parent = nullptr);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void onReceived(const QVariantList &message);
    void reportSoon();
    void report();
    UpdatePresenter *updateWindow();

    MessageChannel &m_channel;
    QmlWindowBackend &m_windows;
    QPointer<QQuickView> m_water;       // once the water panel is made
    QPointer<QQuickView> m_preferences; // once the settings window is made
    quint64 m_read = 0;                 // messages read so far
    bool m_reportPending = false;
};
