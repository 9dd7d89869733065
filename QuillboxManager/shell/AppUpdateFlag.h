#pragma once

#include <QString>

namespace shell
{

/// Sets "ShownUpdateWindow" in the update state file at `path` and leaves its other keys. A file that is missing,
/// cannot be read or cannot be written stays as it is, without a message.
void setShownUpdateWindow(const QString &path, bool shown);

} // namespace shell
