#include "settings/PrefState.h"

#include "app/Clock.h"
#include "app/Log.h"
#include "services/LoginItem.h"
#include "settings/DateText.h"
#include "settings/PrefStyleState.h"
#include "settings/PreferencesStore.h"

#include <QHash>

#include <functional>

namespace {
QString key(const char *k)
{
    return QString::fromLatin1(k);
}
} // namespace

QString PrefState::defaultBreakPrompt()
{
    return QString::fromUtf8(Settings::entry(Setting::breakPrompt).textByDefault);
}

PrefState::PrefState(PreferencesStore &store, QObject *parent)
    : QObject(parent), m_store(store), m_styleState(new PrefStyleState(store, this))
{
    connect(&m_store, &PreferencesStore::changed, this, &PrefState::onStoreChanged);
}

void PrefState::onStoreChanged(const QString &changedKey)
{
    using Signal = void (PrefState::*)();
    static const QHash<QString, Signal> signalOf = {
        {key(launchAtLoginKey), &PrefState::launchAtLoginChanged},
        {key(showTimeKey), &PrefState::showTimeChanged},
        {key(autoCheckUpdateKey), &PrefState::autoCheckUpdateChanged},
        {key(workTimeKey), &PrefState::workTimeChanged},
        {key(breakTimeKey), &PrefState::breakTimeChanged},
        {key(customBreakPromptKey), &PrefState::customBreakPromptChanged},
        {key(breakPromptKey), &PrefState::breakPromptChanged},
        {key(shortBreakTimesKey), &PrefState::shortBreakTimesChanged},
        {key(longBreakTimeKey), &PrefState::longBreakTimeChanged},
        {key(forceLongBreakKey), &PrefState::forceLongBreakChanged},
        {key(restartTimerAfterAwakeKey), &PrefState::restartTimerAfterAwakeChanged},
        {key(stopTimerAfterMouseStopKey), &PrefState::stopTimerAfterMouseStopChanged},
        {key(showNewDayTipKey), &PrefState::showNewDayTipChanged},
        {key(lastWeakupTimestampKey), &PrefState::lastWeakupTimestampChanged},
    };
    if (const auto it = signalOf.constFind(changedKey); it != signalOf.cend())
        std::invoke(it.value(), this);
}

bool PrefState::launchAtLogin() const
{
    return m_store.boolValue(Setting::launchAtLogin);
}

void PrefState::setLaunchAtLogin(bool value)
{
    m_store.setBool(key(launchAtLoginKey), value);
    QString error = QStringLiteral("no login item service on this desktop");
    LoginItem *item = LoginItem::current();
    if (!item || !item->setEnabled(value, &error)) {
        // The reason stays out of this line on purpose; the setting keeps its value.
        LOG_WARNING(QStringLiteral("SMAppService error: "));
    }
}

bool PrefState::showTime() const
{
    return m_store.boolValue(Setting::showTime);
}

void PrefState::setShowTime(bool value)
{
    // The status item follows showTimeChanged, in whichever process wrote it.
    m_store.setBool(key(showTimeKey), value);
}

bool PrefState::autoCheckUpdate() const
{
    return m_store.boolValue(Setting::autoCheckUpdate);
}

void PrefState::setAutoCheckUpdate(bool value)
{
    m_store.setBool(key(autoCheckUpdateKey), value);
}

qint64 PrefState::workTime() const
{
    return m_store.intValue(Setting::workTime);
}

void PrefState::setWorkTime(qint64 value)
{
    m_store.setInt(key(workTimeKey), value);
    Q_EMIT workTimeSet();
}

qint64 PrefState::breakTime() const
{
    return m_store.intValue(Setting::breakTime);
}

void PrefState::setBreakTime(qint64 value)
{
    m_store.setInt(key(breakTimeKey), value);
}

bool PrefState::customBreakPrompt() const
{
    return m_store.boolValue(Setting::customBreakPrompt);
}

void PrefState::setCustomBreakPrompt(bool value)
{
    m_store.setBool(key(customBreakPromptKey), value);
}

QString PrefState::breakPrompt() const
{
    return m_store.stringValue(Setting::breakPrompt);
}

void PrefState::setBreakPrompt(const QString &value)
{
    m_store.setString(key(breakPromptKey), value);
}

qint64 PrefState::shortBreakTimes() const
{
    return m_store.intValue(Setting::shortBreakTimes);
}

void PrefState::setShortBreakTimes(qint64 value)
{
    m_store.setInt(key(shortBreakTimesKey), value);
}

qint64 PrefState::longBreakTime() const
{
    return m_store.intValue(Setting::longBreakTime);
}

void PrefState::setLongBreakTime(qint64 value)
{
    m_store.setInt(key(longBreakTimeKey), value);
}

bool PrefState::forceLongBreak() const
{
    return m_store.boolValue(Setting::forceLongBreak);
}

void PrefState::setForceLongBreak(bool value)
{
    m_store.setBool(key(forceLongBreakKey), value);
}

bool PrefState::restartTimerAfterAwake() const
{
    return m_store.boolValue(Setting::restartTimerAfterAwake);
}

void PrefState::setRestartTimerAfterAwake(bool value)
{
    m_store.setBool(key(restartTimerAfterAwakeKey), value);
}

bool PrefState::stopTimerAfterMouseStop() const
{
    return m_store.boolValue(Setting::stopTimerAfterMouseStop);
}

void PrefState::setStopTimerAfterMouseStop(bool value)
{
    m_store.setBool(key(stopTimerAfterMouseStopKey), value);
}

bool PrefState::showNewDayTip() const
{
    return m_store.boolValue(Setting::showNewDayTip);
}

void PrefState::setShowNewDayTip(bool value)
{
    m_store.setBool(key(showNewDayTipKey), value);
}

double PrefState::lastWeakupTimestamp() const
{
    const double seconds = m_store.doubleValue(Setting::lastWeakupTimestamp);
    if (DateText::isMoment(seconds))
        return seconds;
    LOG_WARNING(QStringLiteral("settings: \"%1\" holds %2, which is no moment in time; "
                               "reading it as 1970-01-01 00:00:00 UTC")
                    .arg(key(lastWeakupTimestampKey))
                    .arg(seconds));
    return 0.0;
}

void PrefState::setLastWeakupTimestamp(double value)
{
    m_store.setDouble(key(lastWeakupTimestampKey), value);
}

bool PrefState::isNewDay() const
{
    const QDateTime last = DateText::fromSeconds(lastWeakupTimestamp());
    return last.date() != Clock::now().toLocalTime().date();
}

void PrefState::updateWeakupTimestamp()
{
    setLastWeakupTimestamp(double(Clock::now().toMSecsSinceEpoch()) / 1000.0);
}
