#include "history/HistoryChart.h"

#include "app/AppState.h"
#include "app/Clock.h"
#include "app/Localized.h"
#include "history/HistoryStore.h"
#include "settings/PrefWaterState.h"

#include <QDir>
#include <QFile>
#include <QLocale>
#include <QStandardPaths>

#include <algorithm>

HistoryChart::HistoryChart(QObject *parent) : QObject(parent), m_path(HistoryModule::filePath())
{
}

QList<HistoryDay> HistoryChart::summarize(const QList<HistoryEvent> &events, const QDate &first,
                                          int count)
{
    QList<HistoryDay> days(count);
    for (int i = 0; i < count; ++i)
        days[i].date = first.addDays(i);
    for (const HistoryEvent &event : events) {
        const qint64 index = first.daysTo(QDateTime::fromSecsSinceEpoch(event.started).date());
        if (index < 0 || index >= count)
            continue;
        HistoryDay &day = days[index];
        if (event.kind == QLatin1String("work")) {
            day.worked += event.seconds;
        } else if (event.kind == QLatin1String("drink")) {
            day.water += event.ml;
        } else if (event.kind == QLatin1String("break") &&
                   event.detail != QLatin1String("greeting")) {
            if (event.ended == QLatin1String("countdown"))
                ++day.taken;
            else if (event.ended == QLatin1String("skip"))
                ++day.skipped;
        }
    }
    return days;
}

void HistoryChart::setSpan(int days)
{
    days = std::clamp(days, 1, 366);
    if (days == m_span)
        return;
    m_span = days;
    Q_EMIT spanChanged();
    refresh();
}

void HistoryChart::refresh()
{
    const QDate today = Clock::now().toLocalTime().date();
    const QDate first = today.addDays(1 - m_span);
    QList<HistoryEvent> events;
    QMap<QDate, qint64> targets;
    m_problem.clear();
    if (!HistoryStore::read(m_path, first, &events, &m_problem, &targets))
        events.clear();
    m_days = summarize(events, first, m_span);
    m_target = std::max<qint64>(AppState::waterState()->target(), 0);
    // A day's target is the last one set on or before it; today's is the
    // setting as it is now, and so is any day before the first one kept.
    targets.insert(today, m_target);
    for (HistoryDay &day : m_days) {
        const auto after = targets.upperBound(day.date);
        day.target = after == targets.cbegin() ? m_target : std::prev(after).value();
    }
    Q_EMIT refreshed();
}

QVariantMap HistoryChart::dayMap(const HistoryDay &day) const
{
    return {
        {QStringLiteral("date"), day.date},
        {QStringLiteral("label"),
         QLocale().toString(day.date, m_span <= 7 ? QStringLiteral("ddd") : QStringLiteral("d"))},
        {QStringLiteral("taken"), day.taken},
        {QStringLiteral("skipped"), day.skipped},
        {QStringLiteral("worked"), int(day.worked / 60)},
        {QStringLiteral("water"), day.water},
        {QStringLiteral("target"), day.target},
        {QStringLiteral("waterShare"),
         day.target > 0 ? std::min(1.0, double(day.water) / double(day.target)) : 0.0},
    };
}

QVariantList HistoryChart::days() const
{
    QVariantList list;
    for (const HistoryDay &day : m_days)
        list.append(dayMap(day));
    return list;
}

QVariantMap HistoryChart::today() const
{
    return m_days.isEmpty() ? QVariantMap() : dayMap(m_days.last());
}

int HistoryChart::mostBreaks() const
{
    int most = 0;
    for (const HistoryDay &day : m_days)
        most = std::max(most, day.taken + day.skipped);
    return most;
}

int HistoryChart::mostWorked() const
{
    qint64 most = 0;
    for (const HistoryDay &day : m_days)
        most = std::max(most, day.worked / 60);
    return int(most);
}

QString HistoryChart::exportCsv() const
{
    QString folder = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    if (folder.isEmpty() || !QDir().mkpath(folder))
        folder = QDir::homePath();
    const QString target =
        QDir(folder).filePath(QStringLiteral("narv-history-%1.csv")
                                  .arg(Clock::now().toLocalTime().date().toString(Qt::ISODate)));
    QFile out(target);
    QString error;
    if (!out.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return NARV_TR("Cannot write %1").arg(target);
    if (!HistoryStore::exportCsv(m_path, {}, &out, &error)) {
        out.remove();
        return error;
    }
    return NARV_TR("Saved as %1").arg(target);
}
