#pragma once

#include "app/CycleEvents.h"
#include "history/HistoryLog.h"

#include <QObject>

#include <memory>

// Watches the work cycle and the water tally from outside the core and hands
// one row per finished phase to the history: a work period, a break (with its
// kind and how it ended), a pause (with its cause), a drink; and the day's
// water target. Only while
// "Keep a history" is on; switching it on loads the store's module.
class HistoryRecorder : public QObject {
    Q_OBJECT
public:
    // Made once at start-up, before the first work period; follows the setting.
    static void install(QObject *parent);

    // `log` null: the module is loaded when the setting is on.
    explicit HistoryRecorder(QObject *parent = nullptr);
    ~HistoryRecorder() override;

    // Tests hand their own log; null stops recording.
    void setLog(std::unique_ptr<HistoryLog> log);

private:
    enum class Phase { None, Work, Break, Stopped };

    void followSetting();
    // The cycle says "changed" several times for one change (stop, then
    // start): the look is taken once, after they are all in.
    void lookSoon();
    void look();
    Phase currentPhase() const;
    void finishPhase(qint64 now);
    void onTallyChanged();
    void recordTarget();

    std::unique_ptr<HistoryLog> m_log;
    bool m_lookPending = false;
    bool m_locked = false;
    Phase m_phase = Phase::None;
    qint64 m_phaseStarted = 0; // seconds since 1970
    qint64 m_planned = 0;      // seconds, of the running break
    QString m_detail;          // the running break's kind or the pause's cause
    CycleEvents::BreakKind m_nextBreak = CycleEvents::BreakKind::Short;
    qint64 m_tally = 0; // ml, as last seen
};
