#include "platform/control/ControlService.h"

#include "ControlAdaptor.h"
#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/Log.h"
#include "app/TicktackController.h"
#include "platform/instance/SingleInstance.h"
#include "settings/PrefWaterState.h"
#include "settings/PromptState.h"
#include "windows/WindowController.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDateTime>
#include <QTimer>

#include <cstdlib>

namespace {
QString cycleState()
{
    // A break started while paused runs to its end; work then stays paused.
    if (TicktackController::remaining(AppState::breakState()) >= 0)
        return QStringLiteral("break");
    if (AppState::manualPause())
        return QStringLiteral("paused");
    if (TicktackController::remaining(AppState::workState()) >= 0)
        return QStringLiteral("working");
    return QStringLiteral("stopped");
}

// The moment `seconds` from now, kept at `previous` while it is within a
// second of it: now + the countdown's remaining seconds wobbles by one as
// the seconds pass, and a wobble is no change of schedule.
qint64 momentIn(qint64 seconds, qint64 previous)
{
    const qint64 moment = QDateTime::currentSecsSinceEpoch() + seconds;
    return std::llabs(moment - previous) <= 1 ? previous : moment;
}
} // namespace

QString ControlService::interfaceName()
{
    return QStringLiteral("app.narv.Narv.Control");
}

QString ControlService::objectPath()
{
    return SingleInstance::objectPath() + QStringLiteral("/Control");
}

bool ControlService::install(QObject *parent)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        LOG_NOTICE(QStringLiteral("no session bus: the narv commands cannot reach this Narv"));
        return false;
    }
    auto *service = new ControlService(parent);
    if (!bus.registerObject(objectPath(), service)) {
        LOG_WARNING(QStringLiteral("cannot export the control interface on %1: %2")
                        .arg(objectPath(), bus.lastError().message()));
        delete service;
        return false;
    }
    LOG_INFO(QStringLiteral("control interface on %1").arg(objectPath()));
    return true;
}

ControlService::ControlService(QObject *parent) : QObject(parent)
{
    new ControlAdaptor(this);
    connect(CycleEvents::instance(), &CycleEvents::changed, this, &ControlService::scheduleRefresh);
    connect(AppState::promptState(), &PromptState::showSkipButtonChanged, this,
            &ControlService::scheduleRefresh);
    PrefWaterState *water = AppState::waterState();
    connect(water, &PrefWaterState::finishedChanged, this, [this] { refresh(false); });
    connect(water, &PrefWaterState::targetChanged, this, [this] { refresh(false); });
    refresh(true);
}

qint64 ControlService::secondsLeft() const
{
    const qint64 onBreak = TicktackController::remaining(AppState::breakState());
    return onBreak >= 0 ? onBreak : TicktackController::remaining(AppState::workState());
}

void ControlService::scheduleRefresh()
{
    // A countdown is replaced in steps (stop, then start) and published as
    // it starts: look once things have settled.
    if (m_refreshPending)
        return;
    m_refreshPending = true;
    QTimer::singleShot(0, this, [this] {
        if (m_refreshPending)
            refresh(true);
    });
}

void ControlService::refresh(bool cycle)
{
    Published now = m_published;
    if (cycle) {
        m_refreshPending = false;
        now.state = cycleState();
        const qint64 work = TicktackController::remaining(AppState::workState());
        const qint64 onBreak = TicktackController::remaining(AppState::breakState());
        now.nextBreak = work >= 0 ? momentIn(work, m_published.nextBreak) : 0;
        now.breakEnds = onBreak >= 0 ? momentIn(onBreak, m_published.breakEnds) : 0;
        // A countdown that ends at another moment is a new one: its length is
        // what is left of it now.
        const qint64 left = onBreak >= 0 ? onBreak : work;
        if (left < 0)
            now.length = 0;
        else if (now.state != m_published.state || now.nextBreak != m_published.nextBreak ||
                 now.breakEnds != m_published.breakEnds)
            now.length = left;
        now.skippable = onBreak >= 0 && AppState::promptState()->showSkipButton();
    }
    PrefWaterState *water = AppState::waterState();
    now.waterTally = water->finished();
    now.waterTarget = water->target();

    QVariantMap changed;
    const auto compare = [&changed](const char *name, const auto &before, const auto &after) {
        if (before != after)
            changed.insert(QLatin1String(name), QVariant::fromValue(after));
    };
    compare("State", m_published.state, now.state);
    compare("Length", m_published.length, now.length);
    compare("NextBreak", m_published.nextBreak, now.nextBreak);
    compare("BreakEnds", m_published.breakEnds, now.breakEnds);
    compare("Skippable", m_published.skippable, now.skippable);
    compare("WaterTally", m_published.waterTally, now.waterTally);
    compare("WaterTarget", m_published.waterTarget, now.waterTarget);
    m_published = now;
    if (changed.isEmpty())
        return;

    QDBusMessage signal =
        QDBusMessage::createSignal(objectPath(), QStringLiteral("org.freedesktop.DBus.Properties"),
                                   QStringLiteral("PropertiesChanged"));
    signal << interfaceName() << changed << QStringList();
    QDBusConnection::sessionBus().send(signal);
}

void ControlService::refuse(const QString &error, const QString &message)
{
    LOG_INFO(QStringLiteral("control: %1").arg(message));
    sendErrorReply(QStringLiteral("app.narv.Narv.Error.") + error, message);
}

void ControlService::Pause()
{
    LOG_INFO(QStringLiteral("control: pause"));
    if (!AppState::manualPause())
        AppState::setManualPause(true);
    refresh(true);
}

void ControlService::Resume()
{
    LOG_INFO(QStringLiteral("control: resume"));
    // While a countdown runs there is nothing to resume; restarting it would
    // throw away the time already worked.
    if (AppState::manualPause() || !TicktackController::isRunning())
        AppState::setManualPause(false);
    refresh(true);
}

void ControlService::Toggle()
{
    if (AppState::manualPause())
        Resume();
    else
        Pause();
}

void ControlService::Skip()
{
    if (TicktackController::remaining(AppState::breakState()) < 0)
        return refuse(QStringLiteral("NotOnBreak"), QStringLiteral("no break to skip"));
    if (!AppState::promptState()->showSkipButton())
        return refuse(QStringLiteral("NotSkippable"),
                      QStringLiteral("this break may not be skipped"));
    LOG_INFO(QStringLiteral("control: skip the break"));
    AppState::promptState()->closePrompt();
    refresh(true);
}

void ControlService::StartBreak()
{
    if (TicktackController::remaining(AppState::breakState()) >= 0)
        return refuse(QStringLiteral("OnBreak"), QStringLiteral("a break is on already"));
    LOG_INFO(QStringLiteral("control: break now"));
    AppState::promptState()->showBreak();
    refresh(true);
}

void ControlService::ShowSettings()
{
    LOG_INFO(QStringLiteral("control: show the settings"));
    WindowController::showPrefView();
}
