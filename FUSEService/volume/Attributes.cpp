#include "volume/Attributes.h"

#include "volume/OpenFile.h"

#include <unistd.h>

namespace volume
{
namespace
{

timespec timeOf(qint64 microseconds)
{
    constexpr qint64 perSecond = 1'000'000;
    qint64 seconds = microseconds / perSecond;
    qint64 rest = microseconds % perSecond;
    if (rest < 0) {
        --seconds;
        rest += perSecond;
    }
    return {seconds, rest * 1000};
}

void fillFile(struct stat &status, qint64 size)
{
    status.st_mode = S_IFREG | 0600;
    status.st_size = size;
    status.st_blocks = (size + 511) / 512;
}

} // namespace

struct stat attributesOf(const Node &node, qint64 created)
{
    struct stat status = {};
    status.st_ino = node.inode;
    status.st_nlink = 1;
    status.st_uid = ::geteuid();
    status.st_gid = ::getegid();
    status.st_blksize = 64 * 1024;
    qint64 modified = node.document && node.document->modified > 0 ? node.document->modified : created;
    if (node.file) {
        const OpenFile::Look look = node.file->look();
        fillFile(status, look.size);
        modified = look.modified;
        status.st_nlink = node.document || node.file->isUnsaved() || node.file->isLocalOnly() ? 1 : 0;
    } else if (node.document && node.document->isFile()) {
        fillFile(status, node.document->size);
    } else {
        status.st_mode = S_IFDIR | (node.document && node.document->holdsDocuments() ? 0700u : 0500u);
    }
    status.st_mtim = timeOf(node.modified.value_or(modified));
    status.st_ctim = status.st_atim = status.st_mtim;
    return status;
}

} // namespace volume
