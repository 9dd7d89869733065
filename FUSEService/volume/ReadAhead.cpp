#include "volume/ReadAhead.h"

#include "volume/BlockCache.h"

#include <algorithm>

namespace volume
{

ReadAhead::Blocks ReadAhead::advance(qint64 offset, qint64 length, qint64 fileSize)
{
    // The kernel's own read-ahead splits a reader's requests and may deliver them a little out of order.
    constexpr qint64 tolerance = BlockCache::blockSize;
    const std::lock_guard lock(mutex);
    const bool goesOn = offset <= expected + tolerance && offset + tolerance >= expected;
    const qint64 end = offset + length;
    expected = goesOn ? std::max(expected, end) : end;
    const qint64 block = std::max<qint64>(end - 1, 0) / BlockCache::blockSize;
    if (!goesOn)
        window = planned = 0;
    else if (offset > 0)
        window = std::clamp<qint64>(block == lastBlock ? window : window * 2, 1, mostBlocks);
    lastBlock = block;
    const qint64 blocks = (fileSize + BlockCache::blockSize - 1) / BlockCache::blockSize;
    const qint64 first = std::max(planned, block + 1);
    const qint64 stillAhead = first - block - 1;
    if (stillAhead * 2 > window)
        return {first, 0};
    planned = std::min(block + 1 + window, blocks);
    return {first, std::max<qint64>(0, planned - first)};
}

} // namespace volume
