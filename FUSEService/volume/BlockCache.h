#pragma once

#include "volume/BlockMemory.h"
#include "volume/Document.h"

#include "api/ByteSink.h"
#include "platform/BackgroundPool.h"

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <tuple>
#include <vector>

namespace volume
{

/// Bytes that stay where they are while somebody holds the slice.
struct Slice {
    BlockPointer block;
    const char *bytes = nullptr;
    qint64 length = 0;
};
using Slices = std::vector<Slice>;

/// Contents of documents in blocks of 1 MiB, bounded. A block that several readers want is fetched once. Any thread.
class BlockCache
{
public:
    static constexpr qint64 blockSize = 1024 * 1024;
    /// Puts bytes [offset, offset + length) of the document into `into`, one after the other; throws Errno.
    using Fetch = std::function<void(const Document &document, qint64 offset, qint64 length, ByteSink &into)>;

    BlockCache(Fetch fetch, qint64 capacity);
    /// Waits for the fetches in progress; what feeds `fetch` is to be stopped first.
    ~BlockCache();
    BlockCache(const BlockCache &) = delete;
    BlockCache &operator=(const BlockCache &) = delete;

    /// Waits for the block; shorter than `blockSize` only at the end. Throws what the fetch threw.
    BlockPointer block(const Document &document, qint64 index);
    /// Fetches these blocks in the background with one call. Those from the first one on that is there or on its way
    /// are left out, and all of them while too much is on its way already.
    void prefetch(const Document &document, qint64 first, qint64 count);
    /// A range out of the blocks, not copied; fewer bytes only at the end.
    Slices slices(const Document &document, qint64 offset, qint64 length);
    /// Copies a range out of the blocks; fewer bytes only at the end.
    qint64 read(const Document &document, qint64 offset, qint64 length, char *into);

    qint64 cachedBytes() const;

private:
    using Key = std::tuple<QString, QString, qint64>; ///< document, revision, index
    struct Entry {
        bool ready = false;
        int error = 0;
        BlockPointer block;
        std::list<Key>::iterator age; ///< of ready entries
    };
    using EntryPointer = std::shared_ptr<Entry>;
    /// Blocks in a row that one call brings.
    struct Run {
        Document document;
        qint64 first = 0;
        std::vector<EntryPointer> entries;
    };
    class Filler;

    Key keyOf(const Document &document, qint64 index) const { return {document.id, document.rev, index}; }
    Run reserve(const Document &document, qint64 first, qint64 count);
    void load(const Run &run);
    void publish(const Key &key, const EntryPointer &entry, BlockPointer block);
    void giveUp(const Run &run, std::size_t from, int error);
    void store(const Key &key, const EntryPointer &entry);

    const Fetch fetch;
    const qint64 capacity;
    BlockMemory memory;
    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable loaded;
    std::map<Key, EntryPointer> entries;
    std::list<Key> ages; ///< of ready entries, least recently used first
    qint64 bytesHeld = 0;
    qint64 blocksComing = 0; ///< in the background
    platform::BackgroundPool pool;
};

} // namespace volume
