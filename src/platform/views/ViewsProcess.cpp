#include "platform/views/ViewsProcess.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "platform/views/MessageChannel.h"
#include "platform/views/ViewsModule.h"
#include "settings/PromptState.h"
#include "windows/CountdownCommand.h"

#include <QCoreApplication>
#include <QProcess>
#include <QProcessEnvironment>
#include <QTimer>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

ViewsProcess::ViewsProcess(QObject *parent) : QObject(parent)
{
    // Every assignment is sent, also of an unchanged value: the views treat
    // each one as an event, as they do in one process (TicktackState.h).
    PromptState *prompt = AppState::promptState();
    TicktackState *breakState = AppState::breakState();
    connect(prompt, &PromptState::promptChanged, this, [this, prompt] {
        send({QStringLiteral("prompt"), prompt->prompt()});
    });
    connect(prompt, &PromptState::showSkipButtonChanged, this, [this, prompt] {
        send({QStringLiteral("showSkipButton"), prompt->showSkipButton()});
    });
    connect(prompt, &PromptState::showPostponeButtonChanged, this, [this, prompt] {
        send({QStringLiteral("showPostponeButton"), prompt->showPostponeButton()});
    });
    connect(breakState, &TicktackState::timeStringChanged, this, [this, breakState] {
        send({QStringLiteral("breakTime"), breakState->timeString()});
    });
    connect(breakState, &TicktackState::timesUpChanged, this, [this, breakState] {
        send({QStringLiteral("breakTimesUp"), breakState->timesUp()});
    });
    connect(AppState::workState(), &TicktackState::timeStringChanged, this,
            &ViewsProcess::onWorkTick);
}

ViewsProcess::~ViewsProcess()
{
    // Its end of the line closes with ours, and it ends.
    delete m_channel;
    if (m_process && !m_process->waitForFinished(2000))
        m_process->kill();
}

qint64 ViewsProcess::processId() const
{
    return m_channel && m_process ? m_process->processId() : 0;
}

bool ViewsProcess::start()
{
    if (m_channel)
        return true;
    int fds[2];
    if (!MessageChannel::makePair(fds)) {
        LOG_ERROR(QStringLiteral("cannot start the window process: no socket (%1)")
                      .arg(QString::fromLocal8Bit(std::strerror(errno))));
        return false;
    }
    const int childEnd = fds[1];
    auto *process = new QProcess(this);
    process->setProgram(QCoreApplication::applicationFilePath());
    process->setArguments({QString::fromLatin1(ViewsModule::processOption)});
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->setInputChannelMode(QProcess::ForwardedInputChannel);
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("NARV_VIEWS_FD"), QString::number(childEnd));
    if (const QString logFile = LogFile::path(); !logFile.isEmpty())
        environment.insert(QString::fromLatin1(ViewsModule::logFileVariable), logFile);
    process->setProcessEnvironment(environment);
    // Runs in the child between fork and exec: the one descriptor it inherits.
    process->setChildProcessModifier([childEnd] { ::fcntl(childEnd, F_SETFD, 0); });
    connect(process, &QProcess::finished, this, [process](int code, QProcess::ExitStatus status) {
        if (status == QProcess::CrashExit)
            LOG_ERROR(QStringLiteral("the window process crashed"));
        else if (code != 0)
            LOG_ERROR(QStringLiteral("the window process ended with exit code %1").arg(code));
        process->deleteLater();
    });
    connect(process, &QProcess::errorOccurred, this, [process](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart) {
            LOG_ERROR(QStringLiteral("cannot start the window process: ") + process->errorString());
            process->deleteLater();
        }
    });
    process->start();
    ::close(childEnd);

    m_process = process;
    m_channel = new MessageChannel(fds[0], this);
    connect(m_channel, &MessageChannel::received, this, &ViewsProcess::onReceived);
    connect(m_channel, &MessageChannel::closed, this, &ViewsProcess::onClosed);
    // What was shown went with the last process (onClosed()); what is being
    // opened now is not reported yet.
    m_sent = 0;
    m_reportedAfter = 0;
    LOG_INFO(QStringLiteral("window process %1 started").arg(process->processId()));
    sendStates();
    return true;
}

void ViewsProcess::sendStates()
{
    PromptState *prompt = AppState::promptState();
    TicktackState *breakState = AppState::breakState();
    send({QStringLiteral("prompt"), prompt->prompt()});
    send({QStringLiteral("showSkipButton"), prompt->showSkipButton()});
    if (prompt->showPostponeButton())
        send({QStringLiteral("showPostponeButton"), true});
    send({QStringLiteral("breakTime"), breakState->timeString()});
    send({QStringLiteral("breakTimesUp"), breakState->timesUp()});
}

void ViewsProcess::send(const QVariantList &message)
{
    if (!m_channel)
        return;
    ++m_sent;
    m_channel->send(message);
}

// Starts the window process when there is none.
void ViewsProcess::command(const QVariantList &message)
{
    if (start())
        send(message);
}

void ViewsProcess::prepareBreak()
{
    m_breakNear = true;
    command({QStringLiteral("prepareBreak")});
    // A countdown that stops (a pause, a screen lock) says nothing: if the
    // break has not come a while after it was due, it is not near.
    QTimer::singleShot((breakLeadSeconds + breakGraceSeconds) * 1000, this, [this] {
        const qint64 left = TicktackController::remaining(AppState::workState());
        if (!m_breakNear || (left >= 0 && left <= breakLeadSeconds))
            return;
        m_breakNear = false;
        endIfIdle();
    });
}

void ViewsProcess::showBreak()
{
    m_breakNear = false;
    m_breakShown = true;
    command({QStringLiteral("showBreak")});
}

void ViewsProcess::closeBreak()
{
    m_breakShown = false;
    send({QStringLiteral("closeBreak")});
}

void ViewsProcess::showAbout()
{
    command({QStringLiteral("showAbout")});
}

void ViewsProcess::showHistory()
{
    command({QStringLiteral("showHistory")});
}

void ViewsProcess::showPrefView()
{
    // The activation token of a second start (SingleInstance) belongs to the
    // window that comes up now, in the window process.
    const QString token = qEnvironmentVariable("XDG_ACTIVATION_TOKEN");
    qunsetenv("XDG_ACTIVATION_TOKEN");
    QVariantList message{QStringLiteral("showPrefView"), token};
    if (m_preferencesGeometry)
        message << *m_preferencesGeometry;
    command(message);
}

void ViewsProcess::showWaterView()
{
    m_waterVisible = true;
    QVariantList message{QStringLiteral("showWaterView")};
    if (m_waterPosition)
        message << *m_waterPosition;
    command(message);
}

void ViewsProcess::closeWaterView()
{
    m_waterVisible = false;
    send({QStringLiteral("closeWaterView")});
}

bool ViewsProcess::isWaterViewVisible() const
{
    return m_waterVisible;
}

void ViewsProcess::showUpdate(const AppcastItem &item)
{
    command({QStringLiteral("showUpdate"), item.title, item.version, item.shortVersion,
             item.releaseNotesLink, item.downloadLink});
}

void ViewsProcess::showUpToDate()
{
    command({QStringLiteral("showUpToDate")});
}

void ViewsProcess::showFailure(const QString &reason)
{
    command({QStringLiteral("showFailure"), reason});
}

void ViewsProcess::onReceived(const QVariantList &message)
{
    const QString name = message.value(0).toString();
    if (name == QLatin1String("command")) {
        const int raw = message.value(1).toInt();
        const std::optional<CountdownCommand> command = CountdownCommands::fromRawValue(raw);
        if (!command) {
            LOG_ERROR(
                QStringLiteral("the window process asked for an unknown command: %1").arg(raw));
            return;
        }
        // The window process wrote the settings a command goes with (a new
        // work time, new working hours) before sending it, so the file
        // watcher's news of them is already waiting here: it goes first.
        QTimer::singleShot(0, this, [command] { CountdownCommands::perform(*command); });
    } else if (name == QLatin1String("windows")) {
        // ["windows", messages read, break shown, water panel shown, any
        // window shown, the water panel's position and the settings
        // window's geometry (each once the window is made)]
        if (const QVariant water = message.value(5); water.typeId() == QMetaType::QPoint)
            m_waterPosition = water.toPoint();
        if (const QVariant settings = message.value(6); settings.typeId() == QMetaType::QRect)
            m_preferencesGeometry = settings.toRect();
        m_reportedAfter = message.value(1).toULongLong();
        // A report older than the last command says nothing of what that
        // command opened.
        if (m_reportedAfter != m_sent)
            return;
        m_breakShown = message.value(2).toBool();
        m_waterVisible = message.value(3).toBool();
        m_anyVisible = message.value(4).toBool();
        endIfIdle();
    } else {
        LOG_ERROR(QStringLiteral("the window process sent an unknown message: ") + name);
    }
}

// Nothing on the screen and no break near: the process goes, and with it
// what it holds.
void ViewsProcess::endIfIdle()
{
    // Not before the process has answered everything it was asked: what it
    // was last asked to show may not be on the screen yet.
    if (!m_channel || m_reportedAfter != m_sent || m_anyVisible || m_breakShown || m_waterVisible)
        return;
    const qint64 left = TicktackController::remaining(AppState::workState());
    if (m_breakNear && left >= 0 && left <= breakLeadSeconds)
        return;
    m_breakNear = false;
    LOG_INFO(QStringLiteral("no window left: the window process ends"));
    // Its end of the line closes with ours, and it quits.
    disconnect(m_channel, nullptr, this, nullptr);
    delete m_channel;
}

void ViewsProcess::onClosed()
{
    m_channel->deleteLater();
    m_channel = nullptr;
    m_anyVisible = false;
    m_waterVisible = false;
    Q_EMIT processEnded();
    if (m_breakShown) {
        // Nothing would end the break now; the user is not kept from working.
        m_breakShown = false;
        LOG_ERROR(QStringLiteral("the break windows went away with their process: the break ends"));
        AppState::promptState()->closePrompt();
    }
}

void ViewsProcess::onWorkTick()
{
    const qint64 left = TicktackController::remaining(AppState::workState());
    // A work period publishes its full length before it runs: look again
    // once it does, so that a period shorter than the lead (a work time of
    // none) has its windows ready too.
    if (left < 0 && !m_lookAgain) {
        m_lookAgain = true;
        QTimer::singleShot(0, this, [this] {
            m_lookAgain = false;
            if (TicktackController::remaining(AppState::workState()) >= 0)
                onWorkTick();
        });
        return;
    }
    const bool near = left >= 0 && left <= breakLeadSeconds;
    if (near && !m_breakNear) {
        prepareBreak();
    } else if (!near && m_breakNear) {
        // The work period started again (a new work time, a resume): the
        // break that was near is not.
        m_breakNear = false;
        endIfIdle();
    }
}
