#pragma once

#include "platform/Host.h"

#include <QString>

/// Writes a report with the stack when a fatal signal arrives.
///
/// The handler neither ends the process nor brings the signal's default action back: what somebody sent leaves the
/// process running, abort() ends it by itself. A fault of the process's own would return to the same instruction for
/// ever; so its second arrival, without another report, gives way to the default action.
class SignalHandler
{
public:
    /// Reports go to "SigCrash" in `cachesFolder`. Once, early in `main`: the main thread gets a stack for the handler
    /// that does not depend on the one in use.
    static void installSignalHandler(const QString &cachesFolder = platform::host().folders.caches());
    /// Writes one report and logs whether it worked. Any thread.
    static bool saveCreash(const QString &text);
};
