#pragma once

#include <QDBusContext>
#include <QObject>
#include <QString>

// Narv's control interface (app.narv.Narv.Control.xml) on the session bus, for
// the `narv` commands, bars and scripts. It reads and drives the core's state
// objects as the status menu and the break screen do, and tells the bus when
// the state or the schedule changes, never on the seconds in between.
class ControlService : public QObject, protected QDBusContext {
    Q_OBJECT
    Q_PROPERTY(QString State READ state)
    Q_PROPERTY(qint64 SecondsLeft READ secondsLeft)
    Q_PROPERTY(qint64 Length READ length)
    Q_PROPERTY(qint64 NextBreak READ nextBreak)
    Q_PROPERTY(qint64 BreakEnds READ breakEnds)
    Q_PROPERTY(bool Skippable READ skippable)
    Q_PROPERTY(qint64 WaterTally READ waterTally)
    Q_PROPERTY(qint64 WaterTarget READ waterTarget)
public:
    static QString interfaceName();
    static QString objectPath();

    // Exports the interface on the session bus, which carries our name
    // already; false (said in the log) when that is not possible.
    static bool install(QObject *parent);

    QString state() const { return m_published.state; }
    qint64 secondsLeft() const;
    qint64 length() const { return m_published.length; }
    qint64 nextBreak() const { return m_published.nextBreak; }
    qint64 breakEnds() const { return m_published.breakEnds; }
    bool skippable() const { return m_published.skippable; }
    qint64 waterTally() const { return m_published.waterTally; }
    qint64 waterTarget() const { return m_published.waterTarget; }

public Q_SLOTS:
    void Pause();
    void Resume();
    void Toggle();
    void Skip();
    void StartBreak();
    void ShowSettings();

private:
    struct Published {
        QString state;
        qint64 length = 0;    // seconds
        qint64 nextBreak = 0; // seconds since the epoch
        qint64 breakEnds = 0; // seconds since the epoch
        bool skippable = false;
        qint64 waterTally = 0;  // ml
        qint64 waterTarget = 0; // ml
    };

    explicit ControlService(QObject *parent);
    // Takes the cycle's state anew (after it changed course) or only the
    // water's, and tells the bus what differs from before.
    void refresh(bool cycle);
    void scheduleRefresh();
    void refuse(const QString &error, const QString &message);

    Published m_published;
    bool m_refreshPending = false;
};
