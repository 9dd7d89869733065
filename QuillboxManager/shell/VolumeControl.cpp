#include "shell/VolumeControl.h"

#include "platform/Host.h"

namespace shell
{

bool VolumeControl::checkIfVolumeMounted(const QString &path) const
{
    return volumes.mountedPaths().contains(path);
}

bool VolumeControl::checkIfVolumeMountedAndUnmount(const QString &path, bool force) const
{
    bool found = false;
    // An empty text is contained in every path and would detach the whole machine.
    for (const QString &mounted : path.isEmpty() ? QStringList() : volumes.mountedPaths()) {
        if (!mounted.contains(path))
            continue;
        unmountVolume(mounted, force);
        found = true;
    }
    return found;
}

void VolumeControl::unmountVolume(const QString &path, bool force) const
{
    volumes.unmount(path, force);
}

} // namespace shell
