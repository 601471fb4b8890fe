#pragma once

#include <QObject>
#include <QString>

#include "settings/PrefStyleState.h"
#include "settings/Settings.h"

class PreferencesStore;

// The general and break settings. Every property reads the settings file on
// each access and writes it at once; its NOTIFY signal fires whenever the
// stored value changes, whoever changed it (this process or an editor).
class PrefState : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(bool showTime READ showTime WRITE setShowTime NOTIFY showTimeChanged)
    Q_PROPERTY(bool autoCheckUpdate READ autoCheckUpdate WRITE setAutoCheckUpdate NOTIFY
                   autoCheckUpdateChanged)
    Q_PROPERTY(qint64 workTime READ workTime WRITE setWorkTime NOTIFY workTimeChanged)
    Q_PROPERTY(qint64 breakTime READ breakTime WRITE setBreakTime NOTIFY breakTimeChanged)
    Q_PROPERTY(bool customBreakPrompt READ customBreakPrompt WRITE setCustomBreakPrompt NOTIFY
                   customBreakPromptChanged)
    Q_PROPERTY(QString breakPrompt READ breakPrompt WRITE setBreakPrompt NOTIFY breakPromptChanged)
    Q_PROPERTY(qint64 shortBreakTimes READ shortBreakTimes WRITE setShortBreakTimes NOTIFY
                   shortBreakTimesChanged)
    Q_PROPERTY(
        qint64 longBreakTime READ longBreakTime WRITE setLongBreakTime NOTIFY longBreakTimeChanged)
    Q_PROPERTY(bool forceLongBreak READ forceLongBreak WRITE setForceLongBreak NOTIFY
                   forceLongBreakChanged)
    Q_PROPERTY(bool restartTimerAfterAwake READ restartTimerAfterAwake WRITE
                   setRestartTimerAfterAwake NOTIFY restartTimerAfterAwakeChanged)
    Q_PROPERTY(bool stopTimerAfterMouseStop READ stopTimerAfterMouseStop WRITE
                   setStopTimerAfterMouseStop NOTIFY stopTimerAfterMouseStopChanged)
    Q_PROPERTY(
        bool showNewDayTip READ showNewDayTip WRITE setShowNewDayTip NOTIFY showNewDayTipChanged)
    Q_PROPERTY(double lastWeakupTimestamp READ lastWeakupTimestamp WRITE setLastWeakupTimestamp
                   NOTIFY lastWeakupTimestampChanged)
    Q_PROPERTY(PrefStyleState *styleState READ styleState CONSTANT)

public:
    // Keys in the settings file (Settings.h).
    static constexpr const char *launchAtLoginKey = Settings::keyName(Setting::launchAtLogin);
    static constexpr const char *showTimeKey = Settings::keyName(Setting::showTime);
    static constexpr const char *autoCheckUpdateKey = Settings::keyName(Setting::autoCheckUpdate);
    static constexpr const char *workTimeKey = Settings::keyName(Setting::workTime);
    static constexpr const char *breakTimeKey = Settings::keyName(Setting::breakTime);
    static constexpr const char *customBreakPromptKey =
        Settings::keyName(Setting::customBreakPrompt);
    static constexpr const char *breakPromptKey = Settings::keyName(Setting::breakPrompt);
    static constexpr const char *shortBreakTimesKey = Settings::keyName(Setting::shortBreakTimes);
    static constexpr const char *longBreakTimeKey = Settings::keyName(Setting::longBreakTime);
    static constexpr const char *forceLongBreakKey = Settings::keyName(Setting::forceLongBreak);
    static constexpr const char *restartTimerAfterAwakeKey =
        Settings::keyName(Setting::restartTimerAfterAwake);
    static constexpr const char *stopTimerAfterMouseStopKey =
        Settings::keyName(Setting::stopTimerAfterMouseStop);
    static constexpr const char *showNewDayTipKey = Settings::keyName(Setting::showNewDayTip);
    static constexpr const char *lastWeakupTimestampKey =
        Settings::keyName(Setting::lastWeakupTimestamp);

    static QString defaultBreakPrompt();

    explicit PrefState(PreferencesStore &store, QObject *parent = nullptr);

    bool launchAtLogin() const;
    // Registers or unregisters the login item, also when the value is unchanged.
    void setLaunchAtLogin(bool value);
    bool showTime() const;
    // Shows or hides the time beside the status icon.
    void setShowTime(bool value);
    bool autoCheckUpdate() const;
    void setAutoCheckUpdate(bool value);
    qint64 workTime() const; // minutes
    // Also says workTimeSet(), on which the countdown restarts.
    void setWorkTime(qint64 value);
    qint64 breakTime() const; // seconds (a short break)
    void setBreakTime(qint64 value);
    bool customBreakPrompt() const;
    void setCustomBreakPrompt(bool value);
    QString breakPrompt() const;
    void setBreakPrompt(const QString &value);
    qint64 shortBreakTimes() const; // every this many breaks, one is long
    void setShortBreakTimes(qint64 value);
    qint64 longBreakTime() const; // minutes
    void setLongBreakTime(qint64 value);
    bool forceLongBreak() const;
    void setForceLongBreak(bool value);
    bool restartTimerAfterAwake() const;
    void setRestartTimerAfterAwake(bool value);
    bool stopTimerAfterMouseStop() const;
    void setStopTimerAfterMouseStop(bool value);
    bool showNewDayTip() const;
    void setShowNewDayTip(bool value);
    double lastWeakupTimestamp() const; // seconds since 1970-01-01 00:00:00 UTC
    void setLastWeakupTimestamp(double value);

    PrefStyleState *styleState() const { return m_styleState; }

    // True when the last recorded screen lock was not today (calendar day, local time).
    bool isNewDay() const;
    // Records now (Clock::now()) as the last screen lock.
    void updateWeakupTimestamp();

Q_SIGNALS:
    // The work time was assigned in this process (an edit of the file does
    // not say it), also to its old value. Where the countdown runs, the work
    // period restarts with the new length unless the user paused
    // (AppState::prefState()); the window process hands it to the counting process.
    void workTimeSet();
    void launchAtLoginChanged();
    void showTimeChanged();
    void autoCheckUpdateChanged();
    void workTimeChanged();
    void breakTimeChanged();
    void customBreakPromptChanged();
    void breakPromptChanged();
    void shortBreakTimesChanged();
    void longBreakTimeChanged();
    void forceLongBreakChanged();
    void restartTimerAfterAwakeChanged();
    void stopTimerAfterMouseStopChanged();
    void showNewDayTipChanged();
    void lastWeakupTimestampChanged();

private:
    void onStoreChanged(const QString &key);

    PreferencesStore &m_store;
    PrefStyleState *m_styleState;
};
