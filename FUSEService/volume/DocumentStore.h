#pragma once

#include "volume/Document.h"

#include <QList>

class ByteSink;
class ByteSource;

namespace volume
{

/// Bytes of the account's quota.
struct Space {
    qint64 total = 0;
    qint64 used = 0;
};

/// The documents of the signed-in account, as the volume needs them. Calls block for a bounded time and throw Errno;
/// any thread, many at a time.
class DocumentStore
{
public:
    virtual ~DocumentStore() = default;

    virtual QList<Document> entries() = 0;
    virtual QList<Document> list(const QString &folderId) = 0;
    /// Reads `length` bytes of the document's own revision, as they arrive; fewer only at its end.
    virtual void read(const Document &document, qint64 offset, qint64 length, ByteSink &into) = 0;
    /// A new file; one of that name which somebody else made meanwhile gets the contents as its new revision.
    virtual Document createFile(const QString &folderId, const QString &name, ByteSource &contents,
                                qint64 modified) = 0;
    /// A new revision of the file.
    virtual Document replaceContents(const QString &id, ByteSource &contents, qint64 modified) = 0;
    virtual Document createFolder(const QString &folderId, const QString &name) = 0;
    virtual void remove(const Document &document) = 0;
    /// EEXIST, with nothing changed, when the name is taken.
    virtual void rename(const Document &document, const QString &name) = 0;
    /// The id it has afterwards. EEXIST, with nothing changed, when its name is taken there.
    virtual QString move(const Document &document, const QString &folderId) = 0;
    virtual void lock(const QString &id) = 0;
    virtual void unlock(const QString &id) = 0;
    virtual Space space() = 0;
};

} // namespace volume
