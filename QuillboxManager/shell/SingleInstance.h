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

/// Another process of this user runs the bundle with this identifier. False without an identifier.
bool otherCopyRuns(const platform::Workspace &workspace, const QString &bundleIdentifier, qint64 ownProcessId);

/// Ends this process' part when another copy runs: hands `arguments` (without the program name) over to it and returns
/// true; the caller then returns 0 from `main` without any window.
bool yieldToOtherCopy(platform::Host &host, const platform::Bundle &bundle, int argc, char **argv);

} // namespace SingleInstance
} // namespace shell
