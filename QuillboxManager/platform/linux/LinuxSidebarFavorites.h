#pragma once

#include "platform/Host.h"

namespace platform
{

class LinuxFolders;

/// The favourite places of the GTK and the KDE file managers; the first entry of that name goes from each list. Any
/// thread.
class LinuxSidebarFavorites final : public SidebarFavorites
{
public:
    explicit LinuxSidebarFavorites(const LinuxFolders &userFolders) : folders(userFolders) {}

    void removeFirstNamed(const QString &displayName) override;

private:
    const LinuxFolders &folders;
};

} // namespace platform
