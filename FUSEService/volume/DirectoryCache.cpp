#include "volume/DirectoryCache.h"

#include "volume/Errno.h"
#include "volume/Names.h"

#include <algorithm>

#include <malloc.h>

namespace volume
{
namespace
{

QHash<QString, DocumentPointer> byName(const QList<Document> &documents)
{
    QHash<QString, DocumentPointer> children;
    children.reserve(documents.size());
    for (const Document &document : documents)
        if (Names::canAppear(document.name) && !children.contains(document.name))
            children.insert(document.name, std::make_shared<const Document>(document));
    return children;
}

/// The reply with a long listing leaves more free memory behind than everything else needs, and the allocator would
/// keep it.
void giveBackFreeMemory(qsizetype listed)
{
    constexpr qsizetype longListing = 10'000;
    if (listed >= longListing)
        ::malloc_trim(0);
}

} // namespace

DirectoryCache::DirectoryCache(Fetch fetchFunction, std::chrono::milliseconds listingLife,
                               std::function<Clock::time_point()> clock)
    : fetch(std::move(fetchFunction)), life(listingLife), now(std::move(clock))
{
}

std::shared_ptr<const DirectoryCache::Listing> DirectoryCache::list(const Document &folder)
{
    std::unique_lock lock(mutex);
    const FolderPointer entry = fresh(folder, lock);
    const auto listing = std::make_shared<Listing>();
    listing->reserve(static_cast<std::size_t>(entry->children.size()));
    for (const DocumentPointer &document : entry->children)
        listing->push_back(document);
    return listing;
}

DocumentPointer DirectoryCache::find(const Document &folder, const QString &name)
{
    std::unique_lock lock(mutex);
    return fresh(folder, lock)->children.value(name);
}

DirectoryCache::FolderPointer DirectoryCache::fresh(const Document &folder, std::unique_lock<std::mutex> &lock)
{
    FolderPointer &slot = folders[folder.id];
    if (!slot)
        slot = std::make_shared<Folder>();
    const FolderPointer entry = slot;
    while (!entry->known || now() >= entry->goodUntil) {
        if (!entry->fetching) {
            refresh(folder, entry, lock);
            continue;
        }
        fetched.wait(lock, [&] { return !entry->fetching; });
        if (entry->error != 0) // everybody waits for one attempt only
            throw Errno{entry->error};
    }
    return entry;
}

void DirectoryCache::refresh(const Document &folder, const FolderPointer &entry, std::unique_lock<std::mutex> &lock)
{
    entry->fetching = true;
    entry->doubted = false;
    entry->changes.clear();
    lock.unlock();
    const Clock::time_point began = now();
    QHash<QString, DocumentPointer> children;
    int error = 0;
    try {
        children = byName(fetch(folder));
    } catch (const Errno &failure) {
        error = failure.code;
    }
    giveBackFreeMemory(children.size());
    const Clock::time_point ended = now();
    lock.lock();
    entry->fetching = false;
    entry->error = error;
    fetched.notify_all();
    if (error != 0)
        throw Errno{error};
    entry->children.swap(children);
    for (const Change &change : entry->changes)
        apply(*entry, change);
    entry->changes.clear();
    entry->known = true;
    const Clock::duration cost = ended - began;
    entry->goodUntil = ended + std::max<Clock::duration>(life, 10 * cost);
    if (entry->doubted)
        entry->goodUntil = ended;
    dropOld();
}

void DirectoryCache::apply(Folder &folder, const Change &change)
{
    if (change.document)
        folder.children.insert(change.name, change.document);
    else
        folder.children.remove(change.name);
}

void DirectoryCache::enter(const QString &folderId, const Change &change)
{
    const std::lock_guard lock(mutex);
    const auto found = folders.constFind(folderId);
    if (found == folders.constEnd())
        return;
    apply(**found, change);
    if ((*found)->fetching)
        (*found)->changes.push_back(change);
}

void DirectoryCache::put(const QString &folderId, const DocumentPointer &document)
{
    enter(folderId, {document->name, document});
}

void DirectoryCache::remove(const QString &folderId, const QString &name)
{
    enter(folderId, {name, nullptr});
}

void DirectoryCache::expire(const QString &folderId)
{
    const std::lock_guard lock(mutex);
    const auto found = folders.constFind(folderId);
    if (found == folders.constEnd())
        return;
    (*found)->goodUntil = now();
    (*found)->doubted = true;
}

void DirectoryCache::dropOld()
{
    constexpr qsizetype mostFolders = 256;
    if (folders.size() <= mostFolders)
        return;
    const Clock::time_point time = now();
    folders.removeIf([&](const QHash<QString, FolderPointer>::iterator &folder) {
        const Folder &held = **folder;
        return !held.fetching && time >= held.goodUntil;
    });
}

} // namespace volume
