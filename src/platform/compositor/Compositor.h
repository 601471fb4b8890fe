#pragma once

// Whether the desktop composites windows, so that a window with an alpha
// channel shows what lies behind it. Without a compositor the see-through
// parts of such a window come out black, so a window may only be translucent
// when this says yes.
namespace Compositor {
// Asked afresh on every call: compositors can be started and stopped while
// Narv runs.
bool isRunning();
} // namespace Compositor
