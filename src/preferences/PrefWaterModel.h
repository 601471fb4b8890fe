#pragma once

#include <QDateTime>
#include <QObject>
#include <QPointer>
#include <QStringList>
#include <QVariantList>
#include <QtQml/qqmlregistration.h>

class PrefWaterState;

// What the Water tab does besides storing its controls: switching the
// reminder on or off puts the status menu's water item in or takes it out and
// arms or cancels the reminder, and a change of the working hours re-arms or
// cancels it (updateSchedule()). These follow the stored values, so an edit of
// the settings file by hand acts the same as a click, but only while the tab
// is on screen (`active`): the window's controls are what carry the actions.
class PrefWaterModel : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(
        PrefWaterState *waterState READ waterState WRITE setWaterState NOTIFY waterStateChanged)
    Q_PROPERTY(bool active READ active WRITE setActive NOTIFY activeChanged)
    // The modes offered, by their names; their index is the mode's raw value.
    Q_PROPERTY(QStringList modeNames READ modeNames CONSTANT)
    // The stored mode's place among modeNames; -1 for a mode not offered.
    Q_PROPERTY(int modeIndex READ modeIndex WRITE setModeIndex NOTIFY modeChanged)
    // The time between two reminders, minutes.
    Q_PROPERTY(int selectedInterval READ selectedInterval WRITE setSelectedInterval NOTIFY
                   selectedIntervalChanged)
    // The current mode's explanation and the intervals it offers (minutes).
    Q_PROPERTY(QString modeTip READ modeTip NOTIFY modeChanged)
    Q_PROPERTY(QVariantList intervalValues READ intervalValues NOTIFY modeChanged)
public:
    explicit PrefWaterModel(QObject *parent = nullptr);

    PrefWaterState *waterState() const { return m_waterState; }
    void setWaterState(PrefWaterState *state);
    bool active() const { return m_active; }
    void setActive(bool active);
    static QStringList modeNames();
    int modeIndex() const;
    void setModeIndex(int index);
    int selectedInterval() const;
    void setSelectedInterval(int minutes);
    QString modeTip() const;
    QVariantList intervalValues() const;

    // The date with its time of day set to hour:minute:00; its day is kept.
    Q_INVOKABLE static QDateTime withTime(const QDateTime &date, int hour, int minute);

    // After a change of the working hours: with the reminder on, refreshes the
    // menu's water item and re-arms the reminder from now inside the hours, or
    // cancels it outside them. With the reminder off, only logs.
    Q_INVOKABLE void updateSchedule();

Q_SIGNALS:
    void waterStateChanged();
    void activeChanged();
    void modeChanged();
    void selectedIntervalChanged();

private:
    void remember();
    void onEnableChanged();
    void onHoursChanged();

    QPointer<PrefWaterState> m_waterState;
    bool m_active = false;
    // What the stored values were when last looked at: the settings signal
    // every write, and only a real change may act.
    bool m_enable = false;
    QDateTime m_start;
    QDateTime m_end;
};
