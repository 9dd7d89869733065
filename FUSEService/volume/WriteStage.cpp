#include "volume/WriteStage.h"

#include "volume/Errno.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace volume
{
namespace
{

/// Unlinked from the start: nothing is left behind however the process ends.
platform::FileDescriptor namelessFile(const QString &folder)
{
    platform::FileDescriptor made(::open(QFile::encodeName(folder).constData(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
    if (made.isOpen())
        return made;
    QByteArray path = QFile::encodeName(folder) + "/staged-XXXXXX"; // some file systems cannot do without a name
    platform::FileDescriptor named(::mkostemp(path.data(), O_CLOEXEC));
    if (!named.isOpen())
        throw Errno{errno};
    ::unlink(path.constData());
    return named;
}

} // namespace

WriteStage::WriteStage(const QString &folder, qint64 length, Fetch fetchFunction)
    : fetch(std::move(fetchFunction)), file(namelessFile(folder)), documentLength(length)
{
    truncate(length);
}

qint64 WriteStage::read(qint64 offset, qint64 length, char *into)
{
    length = std::clamp<qint64>(fileSize - offset, 0, length);
    bring(offset, offset + length);
    qint64 done = 0;
    while (done < length) {
        const ssize_t got = ::pread(file.get(), into + done, static_cast<std::size_t>(length - done), offset + done);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            throw Errno{got < 0 ? errno : EIO};
        done += got;
    }
    return done;
}

void WriteStage::write(qint64 offset, const char *bytes, qint64 length)
{
    put(offset, bytes, length);
    present.add(offset, offset + length);
    fileSize = std::max(fileSize, offset + length);
}

void WriteStage::truncate(qint64 size)
{
    if (::ftruncate(file.get(), size) != 0)
        throw Errno{errno};
    fileSize = size;
    documentLength = std::min(documentLength, size);
    present.cut(size);
}

void WriteStage::bring(qint64 begin, qint64 end)
{
    constexpr qint64 longestFetch = 1024 * 1024;
    end = std::min(end, documentLength);
    QByteArray bytes;
    while (const auto gap = present.firstGap(begin, end)) {
        const qint64 length = std::min(gap->second - gap->first, longestFetch);
        bytes.resize(length);
        fetch(gap->first, length, bytes.data());
        put(gap->first, bytes.constData(), length);
        present.add(gap->first, gap->first + length);
    }
}

void WriteStage::put(qint64 offset, const char *bytes, qint64 length) const
{
    qint64 done = 0;
    while (done < length) {
        const ssize_t put = ::pwrite(file.get(), bytes + done, static_cast<std::size_t>(length - done), offset + done);
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0)
            throw Errno{put < 0 ? errno : ENOSPC};
        done += put;
    }
}

} // namespace volume
