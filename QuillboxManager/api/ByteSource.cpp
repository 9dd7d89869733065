#include "api/ByteSource.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <unistd.h>

qint64 FileSource::readAt(qint64 offset, char *into, qint64 most)
{
    const auto wanted = static_cast<size_t>(std::clamp<qint64>(length - offset, 0, most));
    for (;;) {
        const ssize_t got = pread(descriptor, into, wanted, offset);
        if (got >= 0 || errno != EINTR)
            return got;
    }
}

qint64 MemorySource::readAt(qint64 offset, char *into, qint64 most)
{
    const qint64 count = std::clamp<qint64>(contents.size() - offset, 0, most);
    std::memcpy(into, contents.constData() + offset, static_cast<size_t>(count));
    return count;
}
