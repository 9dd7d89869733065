#pragma once

#include <QString>

namespace platform
{
class Volumes;
}

namespace shell
{

/// Questions and orders about mounted volumes. Every operation may wait for the host's tool: background pool only.
class VolumeControl
{
public:
    explicit VolumeControl(platform::Volumes &hostVolumes) : volumes(hostVolumes) {}

    /// A volume is mounted at exactly this path.
    bool checkIfVolumeMounted(const QString &path) const;
    /// Detaches every volume whose path contains `path`; true when there was one.
    bool checkIfVolumeMountedAndUnmount(const QString &path, bool force) const;
    /// The outcome shows in the list of volumes alone.
    void unmountVolume(const QString &path, bool force) const;

private:
    platform::Volumes &volumes;
};

} // namespace shell
