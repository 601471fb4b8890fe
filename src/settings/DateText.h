#pragma once

#include <QDateTime>
#include <QString>

// Dates in the settings file are the decimal text of their seconds since
// 1970-01-01 00:00:00 UTC, e.g. "1763800000.25". Text that cannot be read
// means that epoch, so reading never fails; so does a number that is no
// moment a date can hold ("nan", "inf", "1e300").
namespace DateText {
QString fromDate(const QDateTime &date);
QDateTime toDate(const QString &text);
// Seconds since the epoch as a date; the epoch for a number that is no moment.
QDateTime fromSeconds(double seconds);
// Whether the seconds are a moment a date holds (finite, within some 142
// million years of 1970).
bool isMoment(double seconds);
} // namespace DateText
