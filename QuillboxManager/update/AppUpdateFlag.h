#pragma once

namespace platform
{
class Bundle;
}

/// Sets "ShownUpdateWindow" in the bundle's update state ("AppUpdate.plist") and leaves its other keys. A file that is
/// missing, cannot be read or cannot be written stays as it is, without a message.
void setShownUpdateWindow(const platform::Bundle &bundle, bool shown);
