#include "volume/BlockCache.h"

#include "volume/Errno.h"

#include <algorithm>
#include <chrono>
#include <cstring>

namespace volume
{
namespace
{
constexpr std::size_t fetchThreads = 8;
}

BlockCache::BlockCache(Fetch fetchFunction, qint64 capacityBytes)
    : fetch(std::move(fetchFunction)), capacity(capacityBytes), pool(fetchThreads)
{
}

BlockCache::~BlockCache()
{
    while (!pool.drain(std::chrono::seconds(1))) {
    }
}

QByteArray BlockCache::block(const Document &document, qint64 index)
{
    const Key key(document.id, document.rev, index);
    std::unique_lock lock(mutex);
    EntryPointer entry;
    if (const auto found = entries.find(key); found != entries.end()) {
        entry = found->second;
        loaded.wait(lock, [&] { return entry->ready; });
        if (entry->error != 0)
            throw Errno{entry->error};
        if (const auto still = entries.find(key); still != entries.end() && still->second == entry)
            ages.splice(ages.end(), ages, entry->age);
        return entry->bytes;
    }
    entry = std::make_shared<Entry>();
    entries.emplace(key, entry);
    lock.unlock();
    load(document, key, entry);
    if (entry->error != 0)
        throw Errno{entry->error};
    return entry->bytes;
}

void BlockCache::prefetch(const Document &document, qint64 index)
{
    const Key key(document.id, document.rev, index);
    const auto entry = std::make_shared<Entry>();
    {
        const std::lock_guard lock(mutex);
        if (!entries.emplace(key, entry).second)
            return;
    }
    pool.run([this, document, key, entry] { load(document, key, entry); });
}

void BlockCache::load(const Document &document, const Key &key, const EntryPointer &entry)
{
    const qint64 offset = std::get<2>(key) * blockSize;
    int error = 0;
    QByteArray bytes;
    try {
        bytes = fetch(document, offset, std::clamp<qint64>(document.size - offset, 0, blockSize));
    } catch (const Errno &failure) {
        error = failure.code;
    }
    const std::lock_guard lock(mutex);
    entry->ready = true;
    entry->error = error;
    if (error != 0)
        entries.erase(key); // whoever comes next tries again
    else
        store(key, entry, bytes);
    loaded.notify_all();
}

void BlockCache::store(const Key &key, const EntryPointer &entry, const QByteArray &bytes)
{
    entry->bytes = bytes;
    entry->age = ages.insert(ages.end(), key);
    bytesHeld += bytes.size();
    while (bytesHeld > capacity && ages.size() > 1) {
        const auto oldest = entries.find(ages.front());
        bytesHeld -= oldest->second->bytes.size();
        entries.erase(oldest);
        ages.pop_front();
    }
}

qint64 BlockCache::read(const Document &document, qint64 offset, qint64 length, char *into)
{
    qint64 done = 0;
    while (done < length) {
        const qint64 position = offset + done;
        const QByteArray bytes = block(document, position / blockSize);
        const qint64 skip = position % blockSize;
        const qint64 part = std::min(length - done, qint64(bytes.size()) - skip);
        if (part <= 0)
            break;
        std::memcpy(into + done, bytes.constData() + skip, static_cast<std::size_t>(part));
        done += part;
    }
    return done;
}

qint64 BlockCache::cachedBytes() const
{
    const std::lock_guard lock(mutex);
    return bytesHeld;
}

} // namespace volume
