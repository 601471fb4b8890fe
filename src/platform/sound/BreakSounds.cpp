#include "platform/sound/BreakSounds.h"

#include "Module.h"
#include "app/CycleEvents.h"
#include "app/Log.h"
#include "settings/PrefInterruptState.h"

namespace {
bool g_inBreak = false;

void play(const char *eventId, const char *description)
{
    if (!PrefInterruptState::instance()->breakSounds())
        return;
    const auto play = reinterpret_cast<BreakSounds::Play>(Module::loadAndSay(
        BreakSounds::moduleFileName, BreakSounds::playEntry, QStringLiteral("sounds")));
    if (!play)
        return;
    const char *error = nullptr;
    if (play(eventId, description, &error) != 0)
        LOG_WARNING(QStringLiteral("sound: cannot play \"%1\" (%2)")
                        .arg(QLatin1String(eventId), QString::fromUtf8(error)));
    else
        LOG_INFO(QStringLiteral("sound: \"%1\"").arg(QLatin1String(eventId)));
}
} // namespace

void BreakSounds::install()
{
    CycleEvents *cycle = CycleEvents::instance();
    QObject::connect(cycle, &CycleEvents::breakStarted, cycle, [](CycleEvents::BreakKind kind) {
        g_inBreak = kind != CycleEvents::BreakKind::Greeting;
        if (g_inBreak)
            play("alarm-clock-elapsed", "Break starts");
    });
    // Said once for one break, though every break window ends it.
    QObject::connect(cycle, &CycleEvents::breakEnded, cycle, [] {
        if (!g_inBreak)
            return;
        g_inBreak = false;
        play("complete", "Break ends");
    });
}
