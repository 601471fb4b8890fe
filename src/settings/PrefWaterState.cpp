#include "settings/PrefWaterState.h"

#include "app/Clock.h"
#include "app/CycleEvents.h"
#include "app/DelayedTask.h"
#include "app/Localized.h"
#include "app/Log.h"
#include "settings/DateText.h"
#include "settings/PreferencesStore.h"

#include <QHash>

#include <functional>
#include <limits>

namespace {
QString key(const char *k)
{
    return QString::fromLatin1(k);
}

// Today at the given time of day, seconds only (no fraction).
QDateTime todayAt(const QDateTime &now, const QTime &time)
{
    return QDateTime(now.date(), QTime(time.hour(), time.minute(), time.second()));
}
} // namespace

std::optional<PrefWaterState::Mode> PrefWaterState::modeFromRawValue(qint64 raw)
{
    if (raw == 0)
        return Mode::interval;
    if (raw == 1)
        return Mode::timing;
    return std::nullopt;
}

QString PrefWaterState::modeDesc(Mode mode)
{
    return mode == Mode::timing ? NARV_TR("Timing") : NARV_TR("Interval");
}

QString PrefWaterState::modeTip(Mode mode)
{
    return mode == Mode::timing ? QStringLiteral("Will remind you at selected time points")
                                : QStringLiteral("Will remind you every selected time interval");
}

QList<int> PrefWaterState::modeValues(Mode mode)
{
    if (mode == Mode::timing)
        return {9, 10, 11, 12, 13, 14, 15, 16, 17, 18}; // hours of the day
    return {15, 30, 45, 60, 90, 120};                   // minutes
}

QList<PrefWaterState::Mode> PrefWaterState::allModes()
{
    // Reminders at fixed hours are not offered (yet): the picker has one choice.
    return {Mode::interval};
}

PrefWaterState::PrefWaterState(PreferencesStore &store, QObject *parent)
    : QObject(parent), m_store(store)
{
    const QDateTime now = Clock::now().toLocalTime();
    const auto timeOfDay = [](Setting hours) {
        return QTime(0, 0).addSecs(int(Settings::entry(hours).byDefault));
    };
    m_defaultStart = todayAt(now, timeOfDay(Setting::waterIntervalStart));
    m_defaultEnd = todayAt(now, timeOfDay(Setting::waterIntervalEnd));
    connect(&m_store, &PreferencesStore::changed, this, &PrefWaterState::onStoreChanged);
}

void PrefWaterState::onStoreChanged(const QString &changedKey)
{
    using Signal = void (PrefWaterState::*)();
    static const QHash<QString, Signal> signalOf = {
        {key(enableKey), &PrefWaterState::enableChanged},
        {key(targetKey), &PrefWaterState::targetChanged},
        {key(modeKey), &PrefWaterState::modeChanged},
        {key(intervalStartKey), &PrefWaterState::intervalStartDateChanged},
        {key(intervalEndKey), &PrefWaterState::intervalEndDateChanged},
        {key(selectedIntervalKey), &PrefWaterState::selectedIntervalChanged},
        {key(finishedKey), &PrefWaterState::finishedChanged},
        {key(lastSelectedAmountKey), &PrefWaterState::lastSelectedAmountChanged},
        {key(lastClickTimestampKey), &PrefWaterState::lastClickTimestampChanged},
    };
    const auto it = signalOf.constFind(changedKey);
    if (it == signalOf.cend())
        return;
    std::invoke(it.value(), this);
    Q_EMIT changed();
    // Ours, the window process's or another program's: the status menu's
    // water item shows the tally and the working hours.
    Q_EMIT CycleEvents::instance()->waterChanged();
}

QDateTime PrefWaterState::storedDate(const char *k, const QDateTime &fallback) const
{
    if (!m_store.contains(key(k)))
        return fallback;
    const QString text = m_store.stringValue(key(k), QString());
    bool ok = false;
    if (!DateText::isMoment(text.trimmed().toDouble(&ok)) || !ok)
        LOG_WARNING(QStringLiteral("settings: \"%1\" holds \"%2\", which is no moment in time; "
                                   "reading it as 1970-01-01 00:00:00 UTC")
                        .arg(key(k), text));
    return DateText::toDate(text);
}

bool PrefWaterState::enable() const
{
    return m_store.boolValue(Setting::waterEnable);
}

void PrefWaterState::setEnable(bool value)
{
    m_store.setBool(key(enableKey), value);
}

qint64 PrefWaterState::target() const
{
    return m_store.intValue(Setting::waterTarget);
}

void PrefWaterState::setTarget(qint64 value)
{
    m_store.setInt(key(targetKey), value);
}

PrefWaterState::Mode PrefWaterState::mode() const
{
    return modeFromRawValue(m_store.intValue(Setting::waterMode)).value_or(Mode::interval);
}

void PrefWaterState::setMode(Mode value)
{
    m_store.setInt(key(modeKey), qint64(value));
}

void PrefWaterState::setModeRaw(int raw)
{
    const auto mode = modeFromRawValue(raw);
    if (!mode) {
        LOG_WARNING(
            QStringLiteral("there is no water reminder mode %1; keeping the current one").arg(raw));
        return;
    }
    setMode(*mode);
}

QDateTime PrefWaterState::intervalStartDate() const
{
    return storedDate(intervalStartKey, m_defaultStart);
}

void PrefWaterState::setIntervalStartDate(const QDateTime &value)
{
    m_store.setString(key(intervalStartKey), DateText::fromDate(value));
}

QDateTime PrefWaterState::intervalEndDate() const
{
    return storedDate(intervalEndKey, m_defaultEnd);
}

void PrefWaterState::setIntervalEndDate(const QDateTime &value)
{
    m_store.setString(key(intervalEndKey), DateText::fromDate(value));
}

qint64 PrefWaterState::selectedInterval() const
{
    return m_store.intValue(Setting::waterSelectedInterval);
}

void PrefWaterState::setSelectedInterval(qint64 value)
{
    m_store.setInt(key(selectedIntervalKey), value);
}

qint64 PrefWaterState::finished() const
{
    return m_store.intValue(Setting::waterFinished);
}

void PrefWaterState::setFinished(qint64 value)
{
    m_store.setInt(key(finishedKey), value);
}

qint64 PrefWaterState::lastSelectedAmount() const
{
    return m_store.intValue(Setting::waterLastSelectedAmount);
}

void PrefWaterState::setLastSelectedAmount(qint64 value)
{
    m_store.setInt(key(lastSelectedAmountKey), value);
}

double PrefWaterState::lastClickTimestamp() const
{
    return m_store.doubleValue(Setting::waterLastShowDate);
}

void PrefWaterState::setLastClickTimestamp(double value)
{
    m_store.setDouble(key(lastClickTimestampKey), value);
}

void PrefWaterState::setAmounts(const QList<qint64> &value)
{
    m_amounts = value;
    Q_EMIT amountsChanged();
}

qint64 PrefWaterState::remain() const
{
    qint64 result = 0;
    if (__builtin_sub_overflow(target(), finished(), &result))
        qFatal("Fatal error: Arithmetic overflow computing the water left to drink");
    return result;
}

float PrefWaterState::finishedPrecent() const
{
    return float(finished()) / float(target());
}

bool PrefWaterState::inWorkTime() const
{
    const QDateTime now = Clock::now().toLocalTime();
    const QDateTime start = todayAt(now, intervalStartDate().toLocalTime().time());
    const QDateTime end = todayAt(now, intervalEndDate().toLocalTime().time());
    return start < now && now < end;
}

bool PrefWaterState::isNewDay() const
{
    const double ms = lastClickTimestamp() * 1000.0;
    // A hand-edited "nan" or 1e300 is no moment of today: a new day, which
    // the callers answer by storing the present moment.
    if (!(ms >= -0x1p62 && ms <= 0x1p62)) {
        LOG_WARNING(QStringLiteral("%1 is not a moment in time; counting today as a new day")
                        .arg(QString::fromLatin1(lastClickTimestampKey)));
        return true;
    }
    const auto last = QDateTime::fromMSecsSinceEpoch(qint64(ms));
    return last.date() != Clock::now().toLocalTime().date();
}

void PrefWaterState::schedule()
{
    cancel();
    if (!inWorkTime()) {
        logger().log(LogLevel::Info, QStringLiteral("Not in work time"), {},
                     LogSource{"PrefWaterState", "schedule()", 112});
        return;
    }
    updateClickTimestamp();
    qint64 delay = 0; // seconds
    if (__builtin_mul_overflow(selectedInterval(), qint64(60), &delay))
        qFatal(
            "Fatal error: Arithmetic overflow converting pref.water.selectedInterval to seconds");
    if (m_workItem)
        m_workItem->deleteLater();
    m_workItem = new DelayedTask([] { Q_EMIT CycleEvents::instance()->waterDue(); }, this);
    m_workItemDue = Clock::now().addSecs(delay);
    // Timers take an int of milliseconds; anything longer than ~24 days would
    // not fit and could never come due in a running session anyway.
    const qint64 maxDelay = std::numeric_limits<int>::max() / 1000;
    m_workItem->schedule(int(qMin(delay, maxDelay) * 1000));
}

void PrefWaterState::cancel()
{
    if (m_workItem)
        m_workItem->cancel();
}

void PrefWaterState::updateFinished()
{
    qint64 sum = 0;
    if (__builtin_add_overflow(finished(), lastSelectedAmount(), &sum))
        qFatal("Fatal error: Arithmetic overflow adding to the water drunk today");
    setFinished(sum);
}

void PrefWaterState::reset()
{
    updateClickTimestamp();
    setFinished(0);
}

void PrefWaterState::updateClickTimestamp()
{
    setLastClickTimestamp(double(Clock::now().toMSecsSinceEpoch()) / 1000.0);
}
