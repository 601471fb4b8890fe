#include "settings/DateText.h"

#include <QLocale>

QString DateText::fromDate(const QDateTime &date)
{
    const double seconds = double(date.toMSecsSinceEpoch()) / 1000.0;
    return QString::number(seconds, 'g', QLocale::FloatingPointShortest);
}

QDateTime DateText::toDate(const QString &text)
{
    bool ok = false;
    const double seconds = text.trimmed().toDouble(&ok);
    return fromSeconds(ok ? seconds : 0.0);
}

bool DateText::isMoment(double seconds)
{
    // Also false for NaN. Well inside what a qint64 of milliseconds holds,
    // and what QDateTime takes.
    constexpr double limit = 0x1p52;
    return seconds >= -limit && seconds <= limit;
}

QDateTime DateText::fromSeconds(double seconds)
{
    if (!isMoment(seconds))
        seconds = 0.0;
    return QDateTime::fromMSecsSinceEpoch(qint64(seconds * 1000.0));
}
