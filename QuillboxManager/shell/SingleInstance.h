#pragma once

#include <QStringList>

namespace platform
{
struct Host;
class Bundle;
class Workspace;
} // namespace platform

namespace shell
{

/// One manager per user. To be asked before any window or connection exists.
namespace SingleInstance
{

/// Other processes of this user that run the same bundle, as seen from one of them. Of copies that start together the
/// one with the earlier start time, then with the smaller process id, is the oldest: exactly one is left.
enum class OtherCopies {
    None,
    Younger, ///< they are to end, unless the one that asks became this application late in its life
    Older,
};

/// None without an identifier.
OtherCopies otherCopies(const platform::Workspace &workspace, const QString &bundleIdentifier, qint64 ownProcessId);

/// Ends this process' part when another copy runs: hands `arguments` (without the program name) over to it and returns
/// true; the caller then returns 0 from `main` without any window.
bool yieldToOtherCopy(platform::Host &host, const platform::Bundle &bundle, int argc, char **argv);

} // namespace SingleInstance
} // namespace shell
