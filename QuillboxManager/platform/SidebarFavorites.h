#pragma once

class QString;

namespace platform
{

/// Adds the folder under its own name to the file manager's favourite places, unless an entry of this name is there;
/// `Host::sidebar` takes it away again. Any thread; touches the disk. A list that cannot be changed stays as it is,
/// after a log line.
void addToSidebarFavorites(const QString &folder);

} // namespace platform
