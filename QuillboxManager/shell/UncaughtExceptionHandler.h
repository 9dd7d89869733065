#pragma once

#include "platform/Host.h"

#include <QString>
#include <QStringList>

/// Writes a report when an exception that nobody catches ends the process.
class UncaughtExceptionHandler
{
public:
    /// Reports go to "OCCrash" in `cachesFolder`. Once, early in `main`. The process still aborts.
    static void installUncaughtExceptionHandler(const QString &cachesFolder = platform::host().folders.caches());
    /// Writes one report and logs whether it worked. Any thread.
    static bool saveCreash(const QString &text);

    /// The report's text. The name stands behind the label of the reason and the reason behind that of the name, as
    /// readers of these reports know them.
    static QString text(const QString &name, const QString &reason, const QStringList &stack);
};
