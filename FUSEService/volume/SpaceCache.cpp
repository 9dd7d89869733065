#include "volume/SpaceCache.h"

#include "volume/Errno.h"

#include <algorithm>

#include <sys/statvfs.h>

namespace volume
{

Space SpaceCache::space()
{
    const auto now = std::chrono::steady_clock::now();
    {
        const std::lock_guard lock(mutex);
        if (known && now - asked < std::chrono::seconds(30))
            return *known;
    }
    try {
        const Space fresh = store.space();
        const std::lock_guard lock(mutex);
        known = fresh;
        asked = now;
        return fresh;
    } catch (const Errno &) {
        const std::lock_guard lock(mutex);
        if (!known)
            throw;
        return *known;
    }
}

struct statvfs volumeStatus(const Space &space)
{
    constexpr qint64 blockSize = 4096;
    constexpr qint64 noQuota = qint64(1) << 50;
    const qint64 total = space.total > 0 ? space.total : noQuota;
    const qint64 left = std::clamp<qint64>(total - space.used, 0, total);
    struct statvfs status = {};
    status.f_bsize = status.f_frsize = blockSize;
    status.f_blocks = static_cast<fsblkcnt_t>(total / blockSize);
    status.f_bfree = status.f_bavail = static_cast<fsblkcnt_t>(left / blockSize);
    status.f_namemax = 255;
    return status;
}

} // namespace volume
