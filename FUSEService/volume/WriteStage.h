#pragma once

#include "volume/RangeMap.h"

#include "platform/FileDescriptor.h"

#include <QString>

#include <functional>

namespace volume
{

/// The contents of a file that is being written: a sparse local file, owner-only and without a name, that holds what
/// was written and, on demand, what the document had before. Throws Errno; not for several threads at once.
class WriteStage
{
public:
    /// Puts bytes [offset, offset + length) of the document into `into`; throws Errno.
    using Fetch = std::function<void(qint64 offset, qint64 length, char *into)>;

    /// `folder` exists; `length`: of the document before.
    WriteStage(const QString &folder, qint64 length, Fetch fetch);

    qint64 size() const { return fileSize; }
    int descriptor() const { return file.get(); }
    /// Fewer bytes than asked for only at the end.
    qint64 read(qint64 offset, qint64 length, char *into);
    void write(qint64 offset, const char *bytes, qint64 length);
    void truncate(qint64 size);
    /// Fetches everything that is still the document's alone.
    void complete() { bring(0, documentLength); }

private:
    void bring(qint64 begin, qint64 end);
    void put(qint64 offset, const char *bytes, qint64 length) const;

    const Fetch fetch;
    platform::FileDescriptor file;
    qint64 fileSize = 0;
    qint64 documentLength = 0; ///< so much of the document still counts, as far as it is not in `present`
    RangeMap present;
};

} // namespace volume
