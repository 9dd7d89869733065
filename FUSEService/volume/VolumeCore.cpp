#include "volume/VolumeCore.h"

#include "volume/Categories.h"

#include <chrono>

namespace volume
{
namespace
{

qint64 microsecondsSinceEpoch()
{
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::microseconds>(now).count();
}

BlockCache::Fetch fetchFrom(DocumentStore &store)
{
    return [&store](const Document &document, qint64 offset, qint64 length, ByteSink &into) {
        store.read(document, offset, length, into);
    };
}

DirectoryCache::Fetch listingFrom(DocumentStore &store)
{
    return [&store](const Document &folder) {
        switch (folder.kind) {
        case Document::Kind::Root:
            return categoryFolders(store.entries());
        case Document::Kind::Category:
            return entriesOfCategory(store.entries(), folder.category);
        default:
            return store.list(folder.id);
        }
    };
}

} // namespace

VolumeCore::VolumeCore(DocumentStore &store, const Settings &settings)
    : creation(microsecondsSinceEpoch()), cache(fetchFrom(store), settings.cacheBytes), spaceCache(store),
      volumeTree({store, cache, settings.stagingFolder, microsecondsSinceEpoch}, listingFrom(store),
                 Names(settings.guard), settings.listingLife)
{
}

} // namespace volume
