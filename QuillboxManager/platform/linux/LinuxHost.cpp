#include "platform/Host.h"

#include "platform/Bundle.h"
#include "platform/HostProcess.h"
#include "platform/ReducedMotion.h"
#include "platform/linux/LinuxDeviceIdentity.h"
#include "platform/linux/LinuxDistributedNotifications.h"
#include "platform/linux/LinuxFileSystemDriver.h"
#include "platform/linux/LinuxFolders.h"
#include "platform/linux/LinuxLaunchEvents.h"
#include "platform/linux/LinuxReducedMotion.h"
#include "platform/linux/LinuxScripts.h"
#include "platform/linux/LinuxSidebarFavorites.h"
#include "platform/linux/LinuxUserNotifications.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/SessionBus.h"

#include <QCoreApplication>

namespace platform
{

namespace
{

LinuxFolders &linuxFolders()
{
    static LinuxFolders folders;
    return folders;
}

/// All parts together. Making them connects to nothing.
struct LinuxHost {
    LinuxHost()
    {
        // The first to ask may be a background job; what speaks to the bus belongs to the main thread.
        if (const QCoreApplication *application = QCoreApplication::instance()) {
            bus.moveToThread(application->thread());
            distributed.moveToThread(application->thread());
        }
    }

    SessionBus bus;
    LinuxScripts scripts{Bundle::main().resourcePath()};
    LinuxWorkspace workspace{linuxFolders(), bus};
    LinuxVolumes volumes{scripts};
    LinuxDeviceIdentity device;
    LinuxFileSystemDriver driver;
    LinuxSidebarFavorites sidebar{linuxFolders()};
    LinuxLaunchEvents launchEvents{bus};
    LinuxDistributedNotifications distributed{bus};
    LinuxUserNotifications userNotifications{bus};
    Host host{workspace, volumes,      device,  linuxFolders(), driver,
              sidebar,   launchEvents, scripts, distributed,    userNotifications};
};

LinuxHost &linuxHost()
{
    // Never destroyed: background jobs may use it until the process has ended.
    static auto *const parts = new LinuxHost;
    return *parts;
}

} // namespace

Folders &hostFolders()
{
    return linuxFolders();
}

Host &host()
{
    return linuxHost().host;
}

SessionBus &hostSessionBus()
{
    return linuxHost().bus;
}

bool reducedMotionWanted()
{
    static const auto *const motion = new LinuxReducedMotion(linuxHost().bus);
    return motion->wanted();
}

} // namespace platform
