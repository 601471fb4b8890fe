#pragma once

#include <QObject>

class PreferencesStore;

// The settings of the gentler interruptions: a heads-up before a break,
// postponing it, pausing for a while, waiting out a call or a full-screen
// window, and sounds. All off as they come. The values are kept here and read
// again only when the file changes, since the countdown asks every second; a
// value outside its choices reads as off, said in the log.
class PrefInterruptState : public QObject {
    Q_OBJECT
    Q_PROPERTY(int headsUpSeconds READ headsUpSeconds WRITE setHeadsUpSeconds NOTIFY changed)
    Q_PROPERTY(int postponeMinutes READ postponeMinutes WRITE setPostponeMinutes NOTIFY changed)
    Q_PROPERTY(int postponeLimit READ postponeLimit WRITE setPostponeLimit NOTIFY changed)
    Q_PROPERTY(bool pauseForEnable READ pauseForEnable WRITE setPauseForEnable NOTIFY changed)
    Q_PROPERTY(bool deferWhenBusy READ deferWhenBusy WRITE setDeferWhenBusy NOTIFY changed)
    Q_PROPERTY(bool breakSounds READ breakSounds WRITE setBreakSounds NOTIFY changed)
public:
    explicit PrefInterruptState(PreferencesStore &store, QObject *parent = nullptr);
    // On the process's own settings store.
    static PrefInterruptState *instance();

    int headsUpSeconds() const { return m_headsUpSeconds; } // 0: off
    void setHeadsUpSeconds(int value);
    int postponeMinutes() const { return m_postponeMinutes; } // 0: off
    void setPostponeMinutes(int value);
    // Postpones in a row; 0 (a bad value) allows none.
    int postponeLimit() const { return m_postponeLimit; }
    void setPostponeLimit(int value);
    bool pauseForEnable() const { return m_pauseForEnable; }
    void setPauseForEnable(bool value);
    bool deferWhenBusy() const { return m_deferWhenBusy; }
    void setDeferWhenBusy(bool value);
    bool breakSounds() const { return m_breakSounds; }
    void setBreakSounds(bool value);

Q_SIGNALS:
    // Any of them changed, here or in the file.
    void changed();

private:
    void read();

    PreferencesStore &m_store;
    int m_headsUpSeconds = 0;
    int m_postponeMinutes = 0;
    int m_postponeLimit = 1;
    bool m_pauseForEnable = false;
    bool m_deferWhenBusy = false;
    bool m_breakSounds = false;
};
