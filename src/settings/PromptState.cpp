#include "settings/PromptState.h"

#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/DelayedTask.h"
#include "app/Log.h"
#include "app/TicktackController.h"
#include "app/TicktackState.h"
#include "settings/BreakStyle.h"
#include "settings/PrefInterruptState.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"

#include <QRandomGenerator>

#include <algorithm>

namespace {
QString randomElement(const QStringList &list)
{
    return list.at(int(QRandomGenerator::global()->bounded(qsizetype(list.size()))));
}
} // namespace

QString PromptState::fallbackNewDayGreeting()
{
    return QStringLiteral(
        "Good morning!\nA bright new day has begun.\nTake it one break at a time.");
}

PromptState::PromptState(const QString &initialPrompt, QObject *parent)
    : QObject(parent), m_prompt(initialPrompt)
{
    // A full work period (a break taken, a resume, an unlock) starts the
    // postpones in a row afresh; a postpone itself does not assign working.
    connect(CycleEvents::instance(), &CycleEvents::workingAssigned, this,
            [this] { m_postponedInRow = 0; });
}

void PromptState::setPrompt(const QString &value)
{
    m_prompt = value;
    Q_EMIT promptChanged();
}

void PromptState::setShowSkipButton(bool value)
{
    m_showSkipButton = value;
    Q_EMIT showSkipButtonChanged();
}

void PromptState::setShowPostponeButton(bool value)
{
    if (value == m_showPostponeButton)
        return;
    m_showPostponeButton = value;
    Q_EMIT showPostponeButtonChanged();
}

void PromptState::showBreak()
{
    PrefState *pref = AppState::prefState();
    m_countBefore = m_shortBreakTimes;
    m_postponed = false;
    const qint64 every = pref->shortBreakTimes();
    if (every == 0)
        qFatal(
            "Fatal error: Division by zero in remainder operation (pref.short.break.times is 0)");
    qint64 next = 0;
    if (__builtin_add_overflow(m_shortBreakTimes, qint64(1), &next))
        qFatal("Fatal error: Arithmetic overflow counting short breaks");
    // Like C++'s %, the remainder takes the sign of the dividend.
    m_shortBreakTimes = next % every;

    if (DelayedTask *idle = AppState::mouseMoveEventItem())
        idle->cancel();

    Q_EMIT CycleEvents::instance()->breakStarted(
        m_shortBreakTimes != 0 ? CycleEvents::BreakKind::Short : CycleEvents::BreakKind::Long);

    qint64 duration = pref->breakTime(); // seconds
    m_long = m_shortBreakTimes == 0;
    m_greeting = false;
    if (m_shortBreakTimes != 0) {
        setShowSkipButton(true);
    } else {
        setShowSkipButton(!pref->forceLongBreak());
        if (__builtin_mul_overflow(pref->longBreakTime(), qint64(60), &duration))
            qFatal("Fatal error: Arithmetic overflow converting pref.long.break.time to seconds");
    }

    if (pref->customBreakPrompt()) {
        setPrompt(pref->breakPrompt());
    } else {
        const QStringList &prompts = BreakStyles::prompts(pref->styleState()->breakStyle());
        setPrompt(prompts.isEmpty() ? pref->breakPrompt() : randomElement(prompts));
    }
    setShowPostponeButton(mayPostpone(true));

    TicktackController::startBreak(duration);
}

void PromptState::showNewDay()
{
    const QStringList &prompts =
        BreakStyles::newDayPrompts(AppState::prefState()->styleState()->breakStyle());
    setPrompt(prompts.isEmpty() ? fallbackNewDayGreeting() : randomElement(prompts));
    setShowSkipButton(false);
    m_greeting = true;
    setShowPostponeButton(false);
    Q_EMIT CycleEvents::instance()->breakStarted(CycleEvents::BreakKind::Greeting);
    TicktackController::startBreak(10);
}

void PromptState::closePrompt()
{
    Q_EMIT CycleEvents::instance()->breakEnded();
    AppState::restartWork();
}

void PromptState::resetShortBreakTimes()
{
    m_shortBreakTimes = 0;
}

bool PromptState::nextIsLong() const
{
    const qint64 every = AppState::prefState()->shortBreakTimes();
    return every != 0 && (m_shortBreakTimes + 1) % every == 0;
}

bool PromptState::canSkipComing() const
{
    return !(nextIsLong() && AppState::prefState()->forceLongBreak());
}

bool PromptState::canPostpone() const
{
    return mayPostpone(TicktackController::remaining(AppState::breakState()) >= 0);
}

bool PromptState::mayPostpone(bool breakOnScreen) const
{
    const PrefInterruptState *prefs = PrefInterruptState::instance();
    if (prefs->postponeMinutes() == 0 || m_postponedInRow >= prefs->postponeLimit() ||
        !AppState::working())
        return false;
    if (!breakOnScreen)
        return canSkipComing();
    return !m_greeting && !(m_long && AppState::prefState()->forceLongBreak());
}

void PromptState::postpone()
{
    const PrefInterruptState *prefs = PrefInterruptState::instance();
    if (!canPostpone()) {
        LOG_INFO(QStringLiteral("postpone refused: %1 of %2 postpones in a row used, or this "
                                "break may not wait")
                     .arg(m_postponedInRow)
                     .arg(prefs->postponeLimit()));
        return;
    }
    ++m_postponedInRow;
    const qint64 minutes = prefs->postponeMinutes();
    LOG_INFO(QStringLiteral("break postponed by %1 minutes (%2 of %3 in a row)")
                 .arg(minutes)
                 .arg(m_postponedInRow)
                 .arg(prefs->postponeLimit()));
    qint64 seconds = minutes * 60;
    if (TicktackController::remaining(AppState::breakState()) >= 0) {
        // The break on the screen comes again as the same kind of break.
        m_shortBreakTimes = m_countBefore;
        m_postponed = true;
        setShowPostponeButton(false);
        Q_EMIT CycleEvents::instance()->breakEnded();
    } else {
        seconds += std::max<qint64>(TicktackController::remaining(AppState::workState()), 0);
    }
    TicktackController::work(seconds);
}

void PromptState::skipComing()
{
    if (!canSkipComing() || TicktackController::remaining(AppState::workState()) < 0) {
        LOG_INFO(QStringLiteral("skip of the coming break refused"));
        return;
    }
    const qint64 every = AppState::prefState()->shortBreakTimes();
    m_shortBreakTimes = every == 0 ? 0 : (m_shortBreakTimes + 1) % every;
    LOG_INFO(QStringLiteral("the coming break is skipped"));
    AppState::restartWork();
}
