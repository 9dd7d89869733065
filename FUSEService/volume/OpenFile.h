#pragma once

#include "volume/BlockCache.h"
#include "volume/DocumentStore.h"
#include "volume/Node.h"
#include "volume/ReadAhead.h"
#include "volume/WriteStage.h"

#include <functional>
#include <memory>
#include <mutex>

namespace volume
{

/// What the files work with; outlives them.
struct FileServices {
    DocumentStore &store;
    BlockCache &cache;
    QString stagingFolder;
    std::function<qint64()> now; ///< microseconds since 1970
};

/// One file that is open or has unsaved contents. Reads come from the server's revision until the first write; from
/// then on from the local stage. Any thread; throws Errno.
class OpenFile
{
public:
    enum class Life {
        Shared,    ///< belongs on the server
        LocalOnly, ///< never goes there
        Removed,   ///< its name is gone, only who has it open still sees it
    };
    struct Look {
        qint64 size = 0;
        qint64 modified = 0;
    };

    OpenFile(const FileServices &services, const DocumentPointer &document);
    /// A new, empty file that is not on the server yet.
    OpenFile(const FileServices &services, Life life);
    ~OpenFile();

    /// Size and time as programs see them. Never waits for the server.
    Look look() const;
    /// Something would be lost if it went now.
    bool isUnsaved() const;
    bool isLocalOnly() const;

    /// Somebody opens it while the server has `document`.
    void opened(const DocumentPointer &document);
    /// Fewer bytes than asked for only at the end.
    Slices read(qint64 offset, qint64 length, ReadAhead &readAhead);
    void write(qint64 offset, const char *bytes, qint64 length);
    void truncate(qint64 size);
    /// False when nothing is written, so that the time cannot go to the server with it.
    bool setModified(qint64 modified);

    /// Exclusive use of the contents for what follows; the others wait.
    std::unique_lock<std::mutex> seize() { return std::unique_lock(content); }
    // With the contents seized:
    bool needsSaving() const { return unsaved && life == Life::Shared; }
    /// Saving failed, and nothing was written since.
    bool failedAlready() const { return saveFailed; }
    void noteFailedSaving() { saveFailed = true; }
    /// All of the contents, local and complete.
    WriteStage &wholeStage();
    /// The contents are on the server as this document.
    void saved(const DocumentPointer &document);
    /// What was kept here alone is to go to the server.
    void becomeShared();
    void releaseLock();
    void becomeRemoved();
    /// What was written goes to a local file as well; false when that is impossible.
    bool copyStage(const QString &path);

private:
    Slices readStage(qint64 offset, qint64 length);
    void beginWriting(qint64 keptLength);
    void makeStage(qint64 keptLength);
    void noteWritten();
    void show(qint64 size, qint64 modified);

    const FileServices &services;
    std::mutex content; ///< guards the six that follow, also while the server is asked for contents
    DocumentPointer base;
    std::unique_ptr<WriteStage> stage;
    bool unsaved = false;
    bool saveFailed = false;
    bool locked = false;
    Life life = Life::Shared;

    mutable std::mutex shownMutex; ///< guards what follows; never held for long
    Look shown;
    bool shownUnsaved = false;
    bool shownLocalOnly = false;
};

} // namespace volume
