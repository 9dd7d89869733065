#pragma once

#include <QStringList>

#include <optional>

/// The manager's process id out of the argument list (without the program name): exactly one plain decimal number that
/// can be a process other than the first. Nothing for anything else.
std::optional<qint64> managerProcessId(const QStringList &arguments);
