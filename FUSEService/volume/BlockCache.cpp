#include "volume/BlockCache.h"

#include "volume/Errno.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <new>
#include <utility>

namespace volume
{
namespace
{
constexpr std::size_t fetchThreads = 8;
constexpr std::size_t mostSpareBlocks = 8;
constexpr qint64 mostBlocksComing = 16;

qint64 sizeOfBlock(const Document &document, qint64 index)
{
    return std::clamp<qint64>(document.size - index * BlockCache::blockSize, 0, BlockCache::blockSize);
}
} // namespace

/// Puts the bytes of a run into its blocks as they arrive; each can be used as soon as it is full.
class BlockCache::Filler : public ByteSink
{
public:
    /// `published` counts the blocks that are there.
    Filler(BlockCache &owner, const Run &wanted, std::size_t &published) : cache(owner), run(wanted), done(published)
    {
        begin();
    }

    bool write(const char *bytes, qint64 count) override;

private:
    void begin();

    BlockCache &cache;
    const Run &run;
    std::size_t &done;
    std::shared_ptr<Block> block; ///< the one being filled, null behind the last one
    qint64 filled = 0;
};

void BlockCache::Filler::begin()
{
    filled = 0;
    block = nullptr;
    for (; done < run.entries.size(); ++done) {
        const qint64 index = run.first + static_cast<qint64>(done);
        block = cache.memory.take(sizeOfBlock(run.document, index));
        if (block->size() > 0)
            return;
        cache.publish(cache.keyOf(run.document, index), run.entries[done], std::exchange(block, nullptr));
    }
}

bool BlockCache::Filler::write(const char *bytes, qint64 count)
{
    while (count > 0 && block) {
        const qint64 part = std::min(count, block->size() - filled);
        std::memcpy(block->data() + filled, bytes, static_cast<std::size_t>(part));
        filled += part;
        bytes += part;
        count -= part;
        if (filled < block->size())
            return true;
        cache.publish(cache.keyOf(run.document, run.first + static_cast<qint64>(done)), run.entries[done], block);
        ++done;
        begin();
    }
    return count == 0;
}

BlockCache::BlockCache(Fetch fetchFunction, qint64 capacityBytes)
    : fetch(std::move(fetchFunction)), capacity(capacityBytes), memory(blockSize, mostSpareBlocks), pool(fetchThreads)
{
}

BlockCache::~BlockCache()
{
    while (!pool.drain(std::chrono::seconds(1))) {
    }
}

BlockPointer BlockCache::block(const Document &document, qint64 index)
{
    std::unique_lock lock(mutex);
    EntryPointer entry;
    if (const auto found = entries.find(keyOf(document, index)); found != entries.end()) {
        entry = found->second;
        loaded.wait(lock, [&] { return entry->ready; });
        if (entry->block && entry->age != ages.end())
            ages.splice(ages.end(), ages, entry->age);
    } else {
        const Run run = reserve(document, index, 1);
        entry = run.entries.front();
        lock.unlock();
        load(run);
    }
    if (entry->error != 0)
        throw Errno{entry->error};
    return entry->block;
}

BlockCache::Run BlockCache::reserve(const Document &document, qint64 first, qint64 count)
{
    Run run{document, first, {}};
    for (qint64 index = first; index < first + count; ++index) {
        const auto entry = std::make_shared<Entry>();
        entry->age = ages.end();
        if (!entries.emplace(keyOf(document, index), entry).second)
            break;
        run.entries.push_back(entry);
    }
    return run;
}

void BlockCache::prefetch(const Document &document, qint64 first, qint64 count)
{
    Run run;
    {
        const std::lock_guard lock(mutex);
        run = reserve(document, first, std::min(count, mostBlocksComing - blocksComing));
        blocksComing += static_cast<qint64>(run.entries.size());
    }
    if (run.entries.empty())
        return;
    pool.run([this, run] {
        load(run);
        const std::lock_guard lock(mutex);
        blocksComing -= static_cast<qint64>(run.entries.size());
    });
}

void BlockCache::load(const Run &run)
{
    const qint64 offset = run.first * blockSize;
    const qint64 end = (run.first + static_cast<qint64>(run.entries.size())) * blockSize;
    std::size_t published = 0;
    int error = EIO; // of what did not come although nothing failed
    try {
        Filler filler(*this, run, published);
        if (run.document.size > offset)
            fetch(run.document, offset, std::min(end, run.document.size) - offset, filler);
    } catch (const Errno &failure) {
        error = failure.code;
    } catch (const std::bad_alloc &) {
        error = ENOMEM;
    }
    giveUp(run, published, error);
}

void BlockCache::publish(const Key &key, const EntryPointer &entry, BlockPointer block)
{
    const std::lock_guard lock(mutex);
    entry->block = std::move(block);
    entry->ready = true;
    store(key, entry);
    loaded.notify_all();
}

/// Whoever comes next tries again.
void BlockCache::giveUp(const Run &run, std::size_t from, int error)
{
    if (from == run.entries.size())
        return;
    const std::lock_guard lock(mutex);
    for (std::size_t number = from; number < run.entries.size(); ++number) {
        run.entries[number]->error = error;
        run.entries[number]->ready = true;
        entries.erase(keyOf(run.document, run.first + static_cast<qint64>(number)));
    }
    loaded.notify_all();
}

void BlockCache::store(const Key &key, const EntryPointer &entry)
{
    entry->age = ages.insert(ages.end(), key);
    bytesHeld += entry->block->size();
    while (bytesHeld > capacity && ages.size() > 1) {
        const auto oldest = entries.find(ages.front());
        bytesHeld -= oldest->second->block->size();
        oldest->second->age = ages.end();
        entries.erase(oldest);
        ages.pop_front();
    }
}

Slices BlockCache::slices(const Document &document, qint64 offset, qint64 length)
{
    Slices found;
    while (length > 0) {
        const BlockPointer from = block(document, offset / blockSize);
        const qint64 skip = offset % blockSize;
        const qint64 part = std::min(length, from->size() - skip);
        if (part <= 0)
            break;
        found.push_back({from, from->data() + skip, part});
        offset += part;
        length -= part;
    }
    return found;
}

qint64 BlockCache::read(const Document &document, qint64 offset, qint64 length, char *into)
{
    qint64 done = 0;
    for (const Slice &slice : slices(document, offset, length)) {
        std::memcpy(into + done, slice.bytes, static_cast<std::size_t>(slice.length));
        done += slice.length;
    }
    return done;
}

qint64 BlockCache::cachedBytes() const
{
    const std::lock_guard lock(mutex);
    return bytesHeld;
}

} // namespace volume
