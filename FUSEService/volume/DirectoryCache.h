#pragma once

#include "volume/Document.h"

#include <QHash>
#include <QList>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace volume
{

/// Listings of folders, each good for a short time. Own changes are entered at once, so that they never need a new
/// listing; a listing that many want is fetched once. Any thread.
class DirectoryCache
{
public:
    using Clock = std::chrono::steady_clock;
    using Listing = std::vector<DocumentPointer>;
    /// Asks the server; throws Errno.
    using Fetch = std::function<QList<Document>(const Document &folder)>;

    /// A listing lives for `life`, and ten times as long as it took to get when that is longer.
    DirectoryCache(Fetch fetch, std::chrono::milliseconds life, std::function<Clock::time_point()> now = Clock::now);

    /// What the folder holds at this moment; stays as it is while others go on.
    std::shared_ptr<const Listing> list(const Document &folder);
    /// Null when there is no such name.
    DocumentPointer find(const Document &folder, const QString &name);
    /// Enters an own change. Does nothing for a folder that was never listed.
    void put(const QString &folderId, const DocumentPointer &document);
    void remove(const QString &folderId, const QString &name);
    /// The next question asks the server again.
    void expire(const QString &folderId);

private:
    struct Change {
        QString name;
        DocumentPointer document; ///< null: removed
    };
    struct Folder {
        bool known = false;
        bool fetching = false;
        bool doubted = false; ///< expired while a listing was on its way
        int error = 0;        ///< of the last listing
        Clock::time_point goodUntil;
        QHash<QString, DocumentPointer> children;
        std::vector<Change> changes; ///< since the listing on its way was asked for
    };
    using FolderPointer = std::shared_ptr<Folder>;

    FolderPointer fresh(const Document &folder, std::unique_lock<std::mutex> &lock);
    void refresh(const Document &folder, const FolderPointer &entry, std::unique_lock<std::mutex> &lock);
    static void apply(Folder &folder, const Change &change);
    void enter(const QString &folderId, const Change &change);
    void dropOld();

    const Fetch fetch;
    const std::chrono::milliseconds life;
    const std::function<Clock::time_point()> now;
    std::mutex mutex; ///< guards what follows; never held during a fetch
    std::condition_variable fetched;
    QHash<QString, FolderPointer> folders;
};

} // namespace volume
