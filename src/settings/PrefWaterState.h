#pragma once

#include <QDateTime>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>

#include "app/DelayedTask.h"
#include "settings/Settings.h"

class PreferencesStore;

// The water reminder: its settings, today's tally, the working hours, and the
// one pending job that opens the water panel.
class PrefWaterState : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool enable READ enable WRITE setEnable NOTIFY enableChanged)
    Q_PROPERTY(qint64 target READ target WRITE setTarget NOTIFY targetChanged)
    Q_PROPERTY(int mode READ modeRaw WRITE setModeRaw NOTIFY modeChanged)
    Q_PROPERTY(QDateTime intervalStartDate READ intervalStartDate WRITE setIntervalStartDate NOTIFY
                   intervalStartDateChanged)
    Q_PROPERTY(QDateTime intervalEndDate READ intervalEndDate WRITE setIntervalEndDate NOTIFY
                   intervalEndDateChanged)
    Q_PROPERTY(qint64 selectedInterval READ selectedInterval WRITE setSelectedInterval NOTIFY
                   selectedIntervalChanged)
    Q_PROPERTY(qint64 finished READ finished WRITE setFinished NOTIFY finishedChanged)
    Q_PROPERTY(qint64 lastSelectedAmount READ lastSelectedAmount WRITE setLastSelectedAmount NOTIFY
                   lastSelectedAmountChanged)
    Q_PROPERTY(double lastClickTimestamp READ lastClickTimestamp WRITE setLastClickTimestamp NOTIFY
                   lastClickTimestampChanged)
    Q_PROPERTY(qint64 remain READ remain NOTIFY changed)
    Q_PROPERTY(float finishedPrecent READ finishedPrecent NOTIFY changed)
    Q_PROPERTY(QList<qint64> amounts READ amounts WRITE setAmounts NOTIFY amountsChanged)

public:
    // How reminders are timed. Only `interval` is offered to the user.
    enum class Mode { interval = 0, timing = 1 };
    Q_ENUM(Mode)

    static constexpr const char *enableKey = Settings::keyName(Setting::waterEnable);
    static constexpr const char *targetKey = Settings::keyName(Setting::waterTarget);
    static constexpr const char *modeKey = Settings::keyName(Setting::waterMode);
    static constexpr const char *intervalStartKey = Settings::keyName(Setting::waterIntervalStart);
    static constexpr const char *intervalEndKey = Settings::keyName(Setting::waterIntervalEnd);
    static constexpr const char *selectedIntervalKey =
        Settings::keyName(Setting::waterSelectedInterval);
    static constexpr const char *finishedKey = Settings::keyName(Setting::waterFinished);
    static constexpr const char *lastSelectedAmountKey =
        Settings::keyName(Setting::waterLastSelectedAmount);
    // The moment the current interval is counted from; the key's name is older
    // than the property's and stays so existing settings keep being read.
    static constexpr const char *lastClickTimestampKey =
        Settings::keyName(Setting::waterLastShowDate);

    static std::optional<Mode> modeFromRawValue(qint64 raw);
    static QString modeDesc(Mode mode); // translated
    static QString modeTip(Mode mode);
    static QList<int> modeValues(Mode mode);
    // The modes the settings offer.
    static QList<Mode> allModes();

    explicit PrefWaterState(PreferencesStore &store, QObject *parent = nullptr);

    bool enable() const;
    void setEnable(bool value);
    qint64 target() const; // ml
    void setTarget(qint64 value);
    Mode mode() const;
    void setMode(Mode value);
    int modeRaw() const { return int(mode()); }
    void setModeRaw(int raw);
    // Only the time of day of the two dates counts.
    QDateTime intervalStartDate() const;
    void setIntervalStartDate(const QDateTime &value);
    QDateTime intervalEndDate() const;
    void setIntervalEndDate(const QDateTime &value);
    qint64 selectedInterval() const; // minutes
    void setSelectedInterval(qint64 value);
    qint64 finished() const; // ml drunk today
    void setFinished(qint64 value);
    qint64 lastSelectedAmount() const; // ml
    void setLastSelectedAmount(qint64 value);
    double lastClickTimestamp() const; // seconds since 1970-01-01 00:00:00 UTC
    void setLastClickTimestamp(double value);

    QList<qint64> amounts() const { return m_amounts; } // ml
    void setAmounts(const QList<qint64> &value);

    qint64 remain() const; // ml, negative past the target
    float finishedPrecent() const;
    // Strictly between today's start and end time; never across midnight.
    Q_INVOKABLE bool inWorkTime() const;
    Q_INVOKABLE bool isNewDay() const;

    // Cancels the pending job and, inside working hours, counts a new interval
    // from now and arms the job that opens the panel when it ends.
    Q_INVOKABLE void schedule();
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void updateFinished();
    Q_INVOKABLE void reset();
    Q_INVOKABLE void updateClickTimestamp();

    // The pending job (tests and the panel's countdown look at it).
    DelayedTask *workItem() const { return m_workItem; }
    QDateTime workItemDue() const { return m_workItemDue; }

Q_SIGNALS:
    // Any stored water setting changed.
    void changed();
    void enableChanged();
    void targetChanged();
    void modeChanged();
    void intervalStartDateChanged();
    void intervalEndDateChanged();
    void selectedIntervalChanged();
    void finishedChanged();
    void lastSelectedAmountChanged();
    void lastClickTimestampChanged();
    void amountsChanged();

private:
    void onStoreChanged(const QString &key);
    QDateTime storedDate(const char *key, const QDateTime &fallback) const;

    PreferencesStore &m_store;
    QDateTime m_defaultStart;
    QDateTime m_defaultEnd;
    QList<qint64> m_amounts{100, 150, 200, 250, 300, 350, 400, 450, 500};
    QPointer<DelayedTask> m_workItem;
    QDateTime m_workItemDue;
};
