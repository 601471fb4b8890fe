#include "history/HistoryRecorder.h"

#include "Module.h"
#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Log.h"
#include "app/SystemEventController.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "history/HistoryPrefs.h"
#include "settings/PrefWaterState.h"
#include "settings/PromptState.h"
#include "statusbar/StatusBarController.h"

#include <QCoreApplication>

namespace {
QString breakKindName(CycleEvents::BreakKind kind)
{
    switch (kind) {
    case CycleEvents::BreakKind::Long:
        return QStringLiteral("long");
    case CycleEvents::BreakKind::Greeting:
        return QStringLiteral("greeting");
    case CycleEvents::BreakKind::Short:
        break;
    }
    return QStringLiteral("short");
}

std::unique_ptr<HistoryLog> openLog()
{
    const auto open = reinterpret_cast<HistoryModule::Open>(Module::loadAndSay(
        HistoryModule::fileName, HistoryModule::openEntry, QStringLiteral("history")));
    if (!open)
        return nullptr;
    const QString path = HistoryModule::filePath();
    LOG_INFO(QStringLiteral("history: recording to %1").arg(path));
    return std::unique_ptr<HistoryLog>(
        open(path, HistoryPrefs::instance()->keepDays(),
             [](const QString &problem) { LOG_ERROR(QStringLiteral("history: ") + problem); }));
}
} // namespace

void HistoryRecorder::install(QObject *parent)
{
    auto *recorder = new HistoryRecorder(parent);
    connect(HistoryPrefs::instance(), &HistoryPrefs::keepHistoryChanged, recorder,
            &HistoryRecorder::followSetting);
    // The last rows (the running phase) go before the process does.
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, recorder,
            [recorder] { recorder->setLog(nullptr); });
    recorder->followSetting();
}

HistoryRecorder::HistoryRecorder(QObject *parent) : QObject(parent)
{
    CycleEvents *cycle = CycleEvents::instance();
    connect(cycle, &CycleEvents::changed, this, &HistoryRecorder::lookSoon);
    connect(cycle, &CycleEvents::breakStarted, this,
            [this](CycleEvents::BreakKind kind) { m_nextBreak = kind; });
    if (ScreenLockSource *lock = SystemEventController::screenLockSource()) {
        connect(lock, &ScreenLockSource::locked, this, [this] { m_locked = true; });
        connect(lock, &ScreenLockSource::unlocked, this, [this] { m_locked = false; });
    }
    connect(AppState::waterState(), &PrefWaterState::finishedChanged, this,
            &HistoryRecorder::onTallyChanged);
    connect(AppState::waterState(), &PrefWaterState::targetChanged, this,
            &HistoryRecorder::recordTarget);
}

HistoryRecorder::~HistoryRecorder()
{
    setLog(nullptr);
}

void HistoryRecorder::followSetting()
{
    const bool on = HistoryPrefs::instance()->keepHistory();
    StatusBarController::showHistoryItem(on);
    if (on == bool(m_log))
        return;
    if (!on)
        LOG_INFO(QStringLiteral("history: recording stops"));
    setLog(on ? openLog() : nullptr);
}

void HistoryRecorder::setLog(std::unique_ptr<HistoryLog> log)
{
    if (m_log)
        finishPhase(Clock::now().toSecsSinceEpoch());
    m_log = std::move(log);
    m_phase = Phase::None;
    if (!m_log)
        return;
    m_tally = AppState::waterState()->finished();
    recordTarget();
    look();
}

void HistoryRecorder::recordTarget()
{
    // Kept with the day, so that the chart draws past days against their own.
    if (m_log)
        m_log->record({QStringLiteral("target"),
                       Clock::now().toSecsSinceEpoch(),
                       0,
                       0,
                       {},
                       {},
                       AppState::waterState()->target()});
}

void HistoryRecorder::lookSoon()
{
    if (!m_log || m_lookPending)
        return;
    m_lookPending = true;
    QMetaObject::invokeMethod(this, &HistoryRecorder::look, Qt::QueuedConnection);
}

HistoryRecorder::Phase HistoryRecorder::currentPhase() const
{
    if (TicktackController::remaining(AppState::breakState()) >= 0)
        return Phase::Break;
    if (TicktackController::remaining(AppState::workState()) >= 0)
        return Phase::Work;
    return Phase::Stopped;
}

void HistoryRecorder::look()
{
    m_lookPending = false;
    if (!m_log)
        return;
    const Phase phase = currentPhase();
    // Nothing counts before the first countdown: no pause to speak of yet.
    if (phase == m_phase || (m_phase == Phase::None && phase == Phase::Stopped))
        return;
    const qint64 now = Clock::now().toSecsSinceEpoch();
    finishPhase(now);
    m_phase = phase;
    m_phaseStarted = now;
    m_planned = 0;
    m_detail.clear();
    if (phase == Phase::Break) {
        m_planned = TicktackController::remaining(AppState::breakState());
        m_detail = breakKindName(m_nextBreak);
        m_nextBreak = CycleEvents::BreakKind::Short;
    } else if (phase == Phase::Stopped) {
        m_detail = AppState::manualPause() ? QStringLiteral("manual")
                   : m_locked              ? QStringLiteral("lock")
                                           : QStringLiteral("idle");
    }
}

void HistoryRecorder::finishPhase(qint64 now)
{
    HistoryEvent event;
    event.started = m_phaseStarted;
    event.seconds = now - m_phaseStarted;
    event.detail = m_detail;
    switch (m_phase) {
    case Phase::None:
        return;
    case Phase::Work:
        event.kind = QStringLiteral("work");
        event.detail.clear();
        break;
    case Phase::Break:
        event.kind = QStringLiteral("break");
        event.planned = m_planned;
        // The break's own countdown keeps its "time's up" until the next break.
        if (AppState::breakState()->timesUp())
            event.ended = QStringLiteral("countdown");
        else if (m_locked)
            event.ended = QStringLiteral("lock");
        else if (AppState::manualPause())
            event.ended = QStringLiteral("pause");
        else if (AppState::promptState()->postponed())
            event.ended = QStringLiteral("postponed");
        else if (currentPhase() == Phase::Break)
            event.ended = QStringLiteral("quit");
        else
            event.ended = QStringLiteral("skip");
        break;
    case Phase::Stopped:
        event.kind = QStringLiteral("pause");
        break;
    }
    m_phase = Phase::None;
    m_log->record(event);
}

void HistoryRecorder::onTallyChanged()
{
    const qint64 tally = AppState::waterState()->finished();
    // A new day's reset (or a smaller hand-edited tally) is no drink.
    if (m_log && tally > m_tally) {
        HistoryEvent event;
        event.kind = QStringLiteral("drink");
        event.started = Clock::now().toSecsSinceEpoch();
        event.ml = tally - m_tally;
        m_log->record(event);
    }
    m_tally = tally;
}
