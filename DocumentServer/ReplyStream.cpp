#include "ReplyStream.h"

#include <algorithm>
#include <cstring>

#include <unistd.h>

namespace documentserver
{

namespace
{
qint64 copy(const QByteArray &bytes, qint64 position, char *into, qint64 most)
{
    const qint64 count = std::min<qint64>(most, bytes.size() - position);
    std::memcpy(into, bytes.constData() + position, static_cast<size_t>(count));
    return count;
}
} // namespace

ReplyStream::ReplyStream(QByteArray before, int descriptor, qint64 offset, qint64 length, QByteArray after)
    : head(std::move(before)), file(descriptor), fileOffset(offset), fileLength(length), tail(std::move(after))
{
}

ReplyStream::~ReplyStream()
{
    if (file >= 0)
        ::close(file);
}

qint64 ReplyStream::read(qint64 position, char *into, qint64 most) const
{
    if (position < 0 || position >= size() || most <= 0)
        return -1;
    if (position < head.size())
        return copy(head, position, into, most);
    const qint64 inFile = position - head.size();
    if (inFile >= fileLength)
        return copy(tail, inFile - fileLength, into, most);
    const ssize_t count =
        ::pread(file, into, static_cast<size_t>(std::min(most, fileLength - inFile)), fileOffset + inFile);
    return count > 0 ? count : -1;
}

} // namespace documentserver
