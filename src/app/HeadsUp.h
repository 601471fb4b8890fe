#pragma once

#include <memory>

class Notifier;

// The notification a few seconds before a break (pref.heads.up.seconds):
// "Break in 30 seconds", with "Postpone" and "Skip this break" when they are
// allowed. It follows the work countdown's own ticks, so it costs no wake-up
// of its own, and goes when the break starts or the countdown stops or
// starts again further away.
namespace HeadsUp {
// Takes the notifier; null stops the heads-up.
void install(std::unique_ptr<Notifier> notifier);
} // namespace HeadsUp
