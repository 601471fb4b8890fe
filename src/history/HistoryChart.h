#pragma once

#include "history/HistoryLog.h"

#include <QDate>
#include <QList>
#include <QObject>
#include <QVariantList>
#include <QtQml/qqml.h>

// One day of the history, as the window draws it.
struct HistoryDay {
    QDate date;
    int taken = 0;     // breaks that ran to their end
    int skipped = 0;   // breaks cut short with Skip
    qint64 worked = 0; // seconds the work countdown ran, by the day it started
    qint64 water = 0;  // ml
    qint64 target = 0; // ml, the water target that day
};

// The history window's figures: the last `span` days up to today, read from
// the history file on refresh().
class HistoryChart : public QObject {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(int span READ span WRITE setSpan NOTIFY spanChanged)
    // One map a day, oldest first: date (Date), label, taken, skipped,
    // worked (minutes), water (ml), target (ml, that day's), waterShare (of
    // that day's target, 0 to 1; 0 without a target).
    Q_PROPERTY(QVariantList days READ days NOTIFY refreshed)
    Q_PROPERTY(QVariantMap today READ today NOTIFY refreshed)
    Q_PROPERTY(int mostBreaks READ mostBreaks NOTIFY refreshed)
    Q_PROPERTY(int mostWorked READ mostWorked NOTIFY refreshed)
    Q_PROPERTY(qint64 target READ target NOTIFY refreshed)
    // Why there is nothing to show; empty when the file was read.
    Q_PROPERTY(QString problem READ problem NOTIFY refreshed)
public:
    explicit HistoryChart(QObject *parent = nullptr);

    // The days from `first` on, `count` of them, with the events that fall
    // on them (local time); days without events are there, all zero.
    static QList<HistoryDay> summarize(const QList<HistoryEvent> &events, const QDate &first,
                                       int count);

    int span() const { return m_span; }
    void setSpan(int days);
    QVariantList days() const;
    QVariantMap today() const;
    int mostBreaks() const;
    int mostWorked() const; // minutes
    qint64 target() const { return m_target; }
    QString problem() const { return m_problem; }

    // Reads the file again; "today" is the day Clock::now() says.
    Q_INVOKABLE void refresh();
    // Writes the whole history as CSV into the documents folder; says where,
    // or why not.
    Q_INVOKABLE QString exportCsv() const;

    // Tests read another file.
    void setFilePath(const QString &path) { m_path = path; }

Q_SIGNALS:
    void spanChanged();
    void refreshed();

private:
    QVariantMap dayMap(const HistoryDay &day) const;

    QString m_path;
    int m_span = 7;
    QList<HistoryDay> m_days;
    qint64 m_target = 0; // ml, today's setting
    QString m_problem;
};
