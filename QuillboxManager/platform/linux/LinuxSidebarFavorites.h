#pragma once

#include "platform/Host.h"

namespace platform
{

class LinuxFolders;

/// The favourite places of the GTK and the KDE file managers; each list is changed where the desktop keeps one. Any
/// thread.
class LinuxSidebarFavorites final : public SidebarFavorites
{
public:
    explicit LinuxSidebarFavorites(const LinuxFolders &userFolders) : folders(userFolders) {}

    /// At the end, unless an entry of this name is there.
    void add(const QString &displayName, const QString &folder) const;
    void removeFirstNamed(const QString &displayName) override;

private:
    const LinuxFolders &folders;
};

} // namespace platform
