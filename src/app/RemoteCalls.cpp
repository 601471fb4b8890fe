#include "app/RemoteCalls.h"

#include "app/AppState.h"
#include "app/Log.h"
#include "settings/PrefWaterState.h"
#include "settings/PreferencesStore.h"
#include "statusbar/StatusBarController.h"

#include <QHash>

namespace {
RemoteCalls::Sender &sender()
{
    static RemoteCalls::Sender installed;
    return installed;
}
} // namespace

void RemoteCalls::setSender(Sender sender)
{
    ::sender() = std::move(sender);
}

bool RemoteCalls::forward(const char *name, const QVariantList &arguments)
{
    if (!sender())
        return false;
    QVariantList call{QString::fromLatin1(name)};
    call.append(arguments);
    sender()(call);
    return true;
}

bool RemoteCalls::perform(const QVariantList &call)
{
    using Run = void (*)(const QVariantList &arguments);
    static const QHash<QString, Run> calls = {
        {QStringLiteral("restartWork"), [](const QVariantList &) { AppState::restartWork(); }},
        {QStringLiteral("showTime"),
         [](const QVariantList &a) { StatusBarController::showTime(a.value(0).toBool()); }},
        {QStringLiteral("insetWaterItem"),
         [](const QVariantList &) { StatusBarController::insetWaterItem(); }},
        {QStringLiteral("removeWaterItem"),
         [](const QVariantList &) { StatusBarController::removeWaterItem(); }},
        {QStringLiteral("updateWaterItem"),
         [](const QVariantList &) { StatusBarController::updateWaterItem(); }},
        {QStringLiteral("scheduleWater"),
         [](const QVariantList &) { AppState::waterState()->schedule(); }},
        {QStringLiteral("cancelWater"),
         [](const QVariantList &) { AppState::waterState()->cancel(); }},
    };
    const QString name = call.value(0).toString();
    const auto it = calls.constFind(name);
    if (it == calls.cend()) {
        LOG_ERROR(QStringLiteral("the window process asked for an unknown call: ") + name);
        return false;
    }
    // A call comes right after the settings the window process wrote for it
    // (a new work time, then the restart), sooner than the file watcher
    // would tell: read them first.
    PreferencesStore::instance().reload();
    it.value()(call.mid(1));
    return true;
}
