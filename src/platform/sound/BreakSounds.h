#pragma once

// With "Sounds at the start and end of a break" on, an event sound from the
// desktop's sound theme as a break (not the greeting) starts and as it ends.
// The sounds play as event sounds, at the volume the desktop gives those.
namespace BreakSounds {
inline constexpr const char *moduleFileName = "narv_sounds.so";
// int (const char *eventId, const char *description, const char **error): 0,
// or libcanberra's error code with its text in *error.
inline constexpr const char *playEntry = "narv_sounds_play";
using Play = int (*)(const char *eventId, const char *description, const char **error);

// Follows the cycle from now on.
void install();
} // namespace BreakSounds
