#pragma once

#include <QString>
#include <QStringList>

#include <sys/types.h>

namespace platform
{

struct SpawnOptions {
    int standardOutput = -1; ///< descriptor the child writes to, -1: the same place as this process
    bool ownGroup = false;   ///< the child leads a process group of its own
    bool detached = false;   ///< a session of its own, working folder "/", no output at all
};

/// Starts a program with an empty standard input, default signal handling and no descriptor but the standard three.
/// A name without a slash is looked up in PATH. Returns its process id, -1 when it cannot be started. The caller reaps.
pid_t spawn(const QString &program, const QStringList &arguments, const SpawnOptions &options);

} // namespace platform
