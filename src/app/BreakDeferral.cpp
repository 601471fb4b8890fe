#include "app/BreakDeferral.h"

#include "app/Clock.h"
#include "app/Log.h"
#include "services/BusySource.h"
#include "settings/PrefInterruptState.h"

#include <vector>

namespace {
struct Deferral {
    std::vector<std::unique_ptr<BusySource>> sources;
    qint64 since = -1; // ms on Clock::monotonicMs() the break has waited since; -1: it does not
    QString reason;
};

Deferral &deferral()
{
    static Deferral d;
    return d;
}

QString busyReason()
{
    for (const auto &source : deferral().sources) {
        if (QString reason = source->busyReason(); !reason.isEmpty())
            return reason;
    }
    return {};
}
} // namespace

void BreakDeferral::addSource(std::unique_ptr<BusySource> source)
{
    deferral().sources.push_back(std::move(source));
}

void BreakDeferral::clearSources()
{
    deferral().sources.clear();
}

bool BreakDeferral::holds()
{
    Deferral &d = deferral();
    if (!PrefInterruptState::instance()->deferWhenBusy()) {
        d.since = -1;
        return false;
    }
    const qint64 now = Clock::monotonicMs();
    const qint64 waited = d.since < 0 ? 0 : (now - d.since) / 1000;
    if (waited >= maxWaitSeconds) {
        LOG_INFO(QStringLiteral("the break waited %1 minutes, the most it waits (%2): it starts")
                     .arg(waited / 60)
                     .arg(d.reason));
        d.since = -1;
        return false;
    }
    const QString reason = busyReason();
    if (reason.isEmpty()) {
        if (d.since >= 0)
            LOG_INFO(QStringLiteral("the break waited %1 seconds (%2): it starts")
                         .arg(waited)
                         .arg(d.reason));
        d.since = -1;
        return false;
    }
    if (d.since < 0 || reason != d.reason)
        LOG_INFO(QStringLiteral("the break waits: %1").arg(reason));
    if (d.since < 0)
        d.since = now;
    d.reason = reason;
    return true;
}
