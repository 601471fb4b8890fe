#pragma once

#include <QObject>
#include <QString>

// What one countdown publishes: the remaining time as shown and whether it ran out.
// Both setters notify on every assignment, also when the value does not change:
// observers treat each assignment as an event (a tick, an expiry), not as a change.
class TicktackState : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString timeString READ timeString WRITE setTimeString NOTIFY timeStringChanged)
    Q_PROPERTY(bool timesUp READ timesUp WRITE setTimesUp NOTIFY timesUpChanged)
public:
    using QObject::QObject;

    QString timeString() const { return m_timeString; }
    void setTimeString(const QString &value);
    bool timesUp() const { return m_timesUp; }
    void setTimesUp(bool value);

Q_SIGNALS:
    void timeStringChanged();
    void timesUpChanged();

private:
    QString m_timeString;
    bool m_timesUp = false;
};
