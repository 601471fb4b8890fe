#pragma once

#include <QVariantList>

#include <functional>

// Narv's windows are drawn by a process of their own (see
// platform/views/ViewsProcess.h), which holds the settings objects its views
// bind to but nothing that counts: no countdown, no status item, no water
// reminder. The few calls its views make that change what the counting
// process owns check forward() first; in the window process it sends them
// there, and the counting process runs them with perform(). Anywhere else
// forward() is false and the call runs where it is.
namespace RemoteCalls {
using Sender = std::function<void(const QVariantList &call)>;
// Installed by the window process; an empty one puts things back.
void setSender(Sender sender);
// Sends the call (a name, then its arguments) when a sender is installed;
// the caller then returns without doing anything itself.
bool forward(const char *name, const QVariantList &arguments = {});
// Runs a call the window process sent. False, and said in the log, for a call
// that is not one of those above.
bool perform(const QVariantList &call);
} // namespace RemoteCalls
