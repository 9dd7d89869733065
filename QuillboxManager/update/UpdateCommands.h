#pragma once

#include "platform/Task.h"

#include <QString>
#include <QStringList>

#include <functional>

/// How the installer starts other programs. `run` blocks until the program has ended; `launch` does not wait, and gives
/// false when the program cannot be started.
struct UpdateCommands {
    std::function<platform::TaskResult(const QString &program, const QStringList &arguments)> run =
        [](const QString &program, const QStringList &arguments) { return platform::runTask(program, arguments); };
    std::function<bool(const QString &program, const QStringList &arguments)> launch = platform::launchDetached;
};
