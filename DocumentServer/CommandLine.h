#pragma once

#include "Server.h"

#include <QStringList>

namespace documentserver
{

/// What the program was asked to do.
struct CommandLine {
    enum class Task { Serve, AddAccount, Help };

    Task task = Task::Serve;
    Options options;
    QString newAccount;
    QString error; ///< not empty: the arguments make no sense
};

/// `arguments` without the program's own name.
CommandLine parseCommandLine(const QStringList &arguments);

/// The text of --help.
QString helpText();

} // namespace documentserver
