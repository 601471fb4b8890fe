#include "settings/PromptState.h"

#include "app/AppState.h"
#include "app/CycleEvents.h"
#include "app/DelayedTask.h"
#include "app/TicktackController.h"
#include "settings/BreakStyle.h"
#include "settings/PrefState.h"
#include "settings/PrefStyleState.h"

#include <QRandomGenerator>

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

void PromptState::showBreak()
{
    PrefState *pref = AppState::prefState();
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

    TicktackController::startBreak(duration);
}

void PromptState::showNewDay()
{
    const QStringList &prompts =
        BreakStyles::newDayPrompts(AppState::prefState()->styleState()->breakStyle());
    setPrompt(prompts.isEmpty() ? fallbackNewDayGreeting() : randomElement(prompts));
    setShowSkipButton(false);
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
