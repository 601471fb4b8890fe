#pragma once

#include "platform/update/UpdatePresenter.h"
#include "windows/WindowController.h"

#include <QObject>
#include <QPoint>
#include <QPointer>
#include <QRect>
#include <QVariantList>

#include <optional>

class MessageChannel;
class QProcess;

// The windows in a process of their own. Narv spends nearly all its life
// counting down beside its icon; a process that has loaded QtGui, a platform
// plugin and Qt Quick keeps most of that resident long after its last window
// closed (see bench/findings.md). So the counting process links none of it,
// and its windows are drawn by `narv --views`, a second process started when
// a window is wanted (or shortly before a break is due, so that the break
// windows are ready) and ended once its windows are closed and no break is
// near.
//
// What the windows show of the counting process's state (the prompt, the
// break countdown) is sent along as it is assigned; the settings they show
// are read from the settings file, which both processes watch. What the
// windows ask of the countdown comes back as a CountdownCommand.
class ViewsProcess : public QObject, public WindowBackend, public UpdatePresenter {
    Q_OBJECT
public:
    // How long before a break is due the window process is started and the
    // break windows are made.
    static constexpr qint64 breakLeadSeconds = 10;
    // How long after a break was due the process waits for it, when the
    // countdown has stopped meanwhile.
    static constexpr qint64 breakGraceSeconds = 5;

    explicit ViewsProcess(QObject *parent = nullptr);
    ~ViewsProcess() override;

    void prepareBreak() override;
    void showBreak() override;
    void closeBreak() override;
    void showAbout() override;
    void showPrefView() override;
    void showHistory() override;
    void showWaterView() override;
    void closeWaterView() override;
    bool isWaterViewVisible() const override;

    void showUpdate(const AppcastItem &item) override;
    void showUpToDate() override;
    void showFailure(const QString &reason) override;

    // The window process's id; 0 while there is none.
    qint64 processId() const;

Q_SIGNALS:
    // The window process has ended, or could not be started.
    void processEnded();

private:
    bool start();
    void command(const QVariantList &message);
    void send(const QVariantList &message);
    void onReceived(const QVariantList &message);
    void onClosed();
    void endIfIdle();
    void onWorkTick();
    void sendStates();

    QPointer<QProcess> m_process;
    QPointer<MessageChannel> m_channel;
    quint64 m_sent = 0; // messages sent to the current process
    // What the window process last said it shows, and after how many messages.
    quint64 m_reportedAfter = 0;
    bool m_anyVisible = false;
    bool m_waterVisible = false;
    bool m_breakShown = false; // between showBreak() and closeBreak() or the windows' own close
    bool m_breakNear = false;  // prepareBreak() since the last break
    bool m_lookAgain = false;  // onWorkTick() once the starting countdown runs
    // Where the user left the water panel: kept here, as the process that
    // showed it goes once the panel is closed.
    std::optional<QPoint> m_waterPosition;
    // Where the settings window was, and how large, in the last process
    // that drew it: it comes back there for the rest of the session.
    std::optional<QRect> m_preferencesGeometry;
};
