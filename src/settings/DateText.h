#pragma once

#include <QDateTime>
#include <QString>

// Dates in the settings file are the decimal text of their seconds since
// 1970-01-01 00:00:00 UTC, e.g. "1763800000.25". Text that cannot be read
// means that epoch, so reading never fails.
namespace DateText {
QString fromDate(const QDateTime &date);
QDateTime toDate(const QString &text);
} // namespace DateText
