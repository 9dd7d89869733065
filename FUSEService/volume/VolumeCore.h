#pragma once

#include "volume/BlockCache.h"
#include "volume/FileHandles.h"
#include "volume/SpaceCache.h"
#include "volume/VolumeTree.h"

namespace volume
{

/// What one mounted volume works with, free of the kernel's side. Any thread.
class VolumeCore
{
public:
    struct Settings {
        QString stagingFolder; ///< exists
        Names::Guard guard;    ///< null: every name is ordinary
        std::chrono::milliseconds listingLife{2'000};
        qint64 cacheBytes = 32 * 1024 * 1024;
    };
    /// `store` outlives it.
    VolumeCore(DocumentStore &store, const Settings &settings);

    VolumeTree &tree() { return volumeTree; }
    FileHandles &handles() { return fileHandles; }
    Space space() { return spaceCache.space(); }
    /// When the volume appeared, in microseconds since 1970.
    qint64 created() const { return creation; }

private:
    const qint64 creation;
    BlockCache cache;
    SpaceCache spaceCache;
    VolumeTree volumeTree;
    FileHandles fileHandles;
};

} // namespace volume
