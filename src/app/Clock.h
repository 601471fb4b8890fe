#pragma once

#include <QDateTime>

#include <functional>

// "Now" for everything that asks the calendar. Tests install their own source
// so they can step across midnight or New Year without waiting.
namespace Clock {
QDateTime now();
// Replaces the source of "now"; an empty function restores the system clock.
void setNowSource(std::function<QDateTime()> source);
} // namespace Clock
