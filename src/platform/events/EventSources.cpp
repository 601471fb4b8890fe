#include "platform/events/EventSources.h"

#include "app/Log.h"
#include "app/SystemEventController.h"
#include "platform/events/DBusScreenLockSource.h"
#include "platform/events/MutterIdleActivitySource.h"
#include "platform/events/WaylandIdleActivitySource.h"
#include "platform/events/XInputActivitySource.h"

#include <QDBusConnection>

namespace {

bool isWaylandSession()
{
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           qEnvironmentVariable("XDG_SESSION_TYPE") == QLatin1String("wayland");
}

std::unique_ptr<InputActivitySource> mutter()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    if (!MutterIdleActivitySource::isAvailable(bus))
        return nullptr;
    LOG_INFO(QStringLiteral("mouse activity: Mutter's idle monitor (keys count as activity too)"));
    return std::make_unique<MutterIdleActivitySource>(bus);
}

std::unique_ptr<InputActivitySource> inputSource()
{
    if (!isWaylandSession()) {
        if (auto x = XInputActivitySource::open())
            return x;
        return mutter();
    }
    if (auto m = mutter())
        return m;
    if (auto w = WaylandIdleActivitySource::open()) {
        LOG_INFO(
            QStringLiteral("mouse activity: %1 (keys count as activity too)").arg(w->protocol()));
        return w;
    }
    return nullptr;
}

} // namespace

void EventSources::install()
{
    SystemEventController::setScreenLockSource(std::make_unique<DBusScreenLockSource>(
        QDBusConnection::sessionBus(), QDBusConnection::systemBus()));
    SystemEventController::setInputActivitySource(inputSource());
}
