#pragma once

#include <QString>

namespace platform
{
class Bundle;
struct Host;
} // namespace platform

namespace install
{

/// For the client to call once its event loop runs, in the background: tells an installer that waits for it that this
/// version works. When no installer is at work, it also removes what a killed one left beside the bundle and detaches
/// downloaded images. Blocks; nothing to do costs two looks at the disk and one at the mount table.
void clearLeftovers(const platform::Host &host, const platform::Bundle &bundle);

} // namespace install
