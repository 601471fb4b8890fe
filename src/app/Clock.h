#pragma once

#include <QDateTime>

#include <functional>

// "Now" for everything that asks the calendar. Tests install their own source
// so they can step across midnight or New Year without waiting.
namespace Clock {
QDateTime now();
// The same as milliseconds since 1970 (UTC), without the local time zone's
// conversion, which asks the system for the zone each time: for what runs
// every second.
qint64 nowMs();
// Replaces the source of "now"; an empty function restores the system clock.
void setNowSource(std::function<QDateTime()> source);

// Milliseconds on a clock that only runs forward and ignores changes of the
// wall time; delays and deadlines are kept on it. Tests step it instead of
// waiting.
qint64 monotonicMs();
// Replaces the source of monotonicMs(); an empty function restores the steady clock.
void setMonotonicSource(std::function<qint64()> source);
} // namespace Clock
