#pragma once

// Connects the work cycle to the machine: screen lock and unlock, and mouse and
// modifier-key activity.
namespace SystemEventController {
void setup();
} // namespace SystemEventController
