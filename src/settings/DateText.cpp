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
    const double msecs = ok ? seconds * 1000.0 : 0.0;
    return QDateTime::fromMSecsSinceEpoch(qint64(msecs));
}
