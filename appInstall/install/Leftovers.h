#pragma once

#include <QString>

#include <chrono>

namespace platform
{
class Bundle;
struct Host;
} // namespace platform

namespace install
{

/// For the client to call once its event loop runs, in the background: tells an installer that waits for it that this
/// version works, and gives it `patience` to finish. When no installer is at work, removes what a killed one left
/// beside the bundle and detaches downloaded images; a working one is left alone. Blocks; nothing to do costs two looks
/// at the disk and one at the mount table.
void clearLeftovers(const platform::Host &host, const platform::Bundle &bundle,
                    std::chrono::milliseconds patience = std::chrono::minutes(1));

/// For the client to call as early as it can: when this version is on trial and the installer that should watch it is
/// gone, starts `helper`, the installer's program, which finishes the update or brings the old version back. Costs one
/// look at the disk when nothing is on trial.
void watchTrial(const platform::Host &host, const platform::Bundle &bundle, const QString &helper);

} // namespace install
