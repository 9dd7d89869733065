#pragma once

#include <QString>

/// Fixed names the companion shares with the manager.
namespace CompanionStrings
{

inline QString socketName()
{
    return QStringLiteral("search_socket");
}

/// Exit codes, for whoever reads the journal.
enum ExitCode { Stopped = 0, BadArguments = 64, NoManager = 69, NoVolume = 71, NoSocket = 73, NotSignedIn = 77 };

} // namespace CompanionStrings
