#pragma once

#include "volume/Document.h"

#include "platform/BackgroundPool.h"

#include <QByteArray>

#include <condition_variable>
#include <functional>
#include <list>
#include <map>
#include <mutex>
#include <tuple>

namespace volume
{

/// Contents of documents in blocks of 1 MiB, bounded. A block that several readers want is fetched once. Any thread.
class BlockCache
{
public:
    static constexpr qint64 blockSize = 1024 * 1024;
    /// Bytes [offset, offset + length) of the document; throws Errno.
    using Fetch = std::function<QByteArray(const Document &document, qint64 offset, qint64 length)>;

    BlockCache(Fetch fetch, qint64 capacity);
    /// Waits for the fetches in progress; what feeds `fetch` is to be stopped first.
    ~BlockCache();
    BlockCache(const BlockCache &) = delete;
    BlockCache &operator=(const BlockCache &) = delete;

    /// Waits for the block; shorter than `blockSize` only at the end. Throws what the fetch threw.
    QByteArray block(const Document &document, qint64 index);
    /// Fetches the block in the background unless it is there or on its way.
    void prefetch(const Document &document, qint64 index);
    /// Copies a range out of the blocks; fewer bytes only at the end.
    qint64 read(const Document &document, qint64 offset, qint64 length, char *into);

    qint64 cachedBytes() const;

private:
    using Key = std::tuple<QString, QString, qint64>; ///< document, revision, index
    struct Entry {
        bool ready = false;
        int error = 0;
        QByteArray bytes;
        std::list<Key>::iterator age; ///< of ready entries
    };
    using EntryPointer = std::shared_ptr<Entry>;

    void load(const Document &document, const Key &key, const EntryPointer &entry);
    void store(const Key &key, const EntryPointer &entry, const QByteArray &bytes);

    const Fetch fetch;
    const qint64 capacity;
    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable loaded;
    std::map<Key, EntryPointer> entries;
    std::list<Key> ages; ///< of ready entries, least recently used first
    qint64 bytesHeld = 0;
    platform::BackgroundPool pool;
};

} // namespace volume
