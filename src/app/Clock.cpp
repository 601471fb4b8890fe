#include "app/Clock.h"

#include <chrono>

namespace {
std::function<QDateTime()> &source()
{
    static std::function<QDateTime()> s;
    return s;
}

std::function<qint64()> &monotonicSource()
{
    static std::function<qint64()> s;
    return s;
}
} // namespace

QDateTime Clock::now()
{
    if (auto &s = source())
        return s();
    return QDateTime::currentDateTime();
}

qint64 Clock::nowMs()
{
    if (auto &s = source())
        return s().toMSecsSinceEpoch();
    return QDateTime::currentMSecsSinceEpoch();
}

void Clock::setNowSource(std::function<QDateTime()> s)
{
    source() = std::move(s);
}

qint64 Clock::monotonicMs()
{
    if (auto &s = monotonicSource())
        return s();
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void Clock::setMonotonicSource(std::function<qint64()> s)
{
    monotonicSource() = std::move(s);
}
