#include "volume/FuseOperations.h"

#include "volume/FuseAnswer.h"

#include <sys/statvfs.h>
#include <unistd.h>

namespace volume
{
namespace
{
using namespace answering;

void initialise(void *, fuse_conn_info *connection)
{
    constexpr unsigned megabyte = 1024 * 1024;
    connection->max_write = megabyte;
    connection->max_read = megabyte;
    connection->max_readahead = megabyte;
    connection->max_background = 64;
    connection->congestion_threshold = 48;
    // The kernel must not gather writes by itself: a full quota or a lock is told to the write that meets it.
    connection->want &= ~static_cast<unsigned>(FUSE_CAP_WRITEBACK_CACHE);
}

void getAttributes(fuse_req_t request, fuse_ino_t inode, fuse_file_info *)
{
    answer(request, [&] { replyAttributes(request, tree(request).current(inode)); });
}

void refuseOtherOwner(const struct stat &wanted, int which)
{
    if ((which & FUSE_SET_ATTR_UID) != 0 && wanted.st_uid != ::geteuid())
        throw Errno{EPERM};
    if ((which & FUSE_SET_ATTR_GID) != 0 && wanted.st_gid != ::getegid())
        throw Errno{EPERM};
}

qint64 microsecondsOf(const timespec &time)
{
    return qint64(time.tv_sec) * 1'000'000 + time.tv_nsec / 1000;
}

void resize(VolumeTree &files, Inode inode, qint64 size, bool isOpen)
{
    const auto file = files.nodeTable().node(inode).file;
    if (isOpen && file)
        file->truncate(size);
    else
        files.truncate(inode, size);
}

/// Permission bits are fixed, so setting them is accepted and changes nothing.
void setAttributes(fuse_req_t request, fuse_ino_t inode, struct stat *wanted, int which, fuse_file_info *info)
{
    answer(request, [&] {
        VolumeTree &files = tree(request);
        refuseOtherOwner(*wanted, which);
        if ((which & FUSE_SET_ATTR_SIZE) != 0)
            resize(files, inode, wanted->st_size, info != nullptr);
        if ((which & FUSE_SET_ATTR_MTIME_NOW) != 0)
            files.setModified(inode, files.fileServices().now());
        else if ((which & FUSE_SET_ATTR_MTIME) != 0)
            files.setModified(inode, microsecondsOf(wanted->st_mtim));
        replyAttributes(request, files.nodeTable().node(inode));
    });
}

void forget(fuse_req_t request, fuse_ino_t inode, std::uint64_t count)
{
    tree(request).nodeTable().forget(inode, count);
    fuse_reply_none(request);
}

void forgetMany(fuse_req_t request, std::size_t count, fuse_forget_data *forgotten)
{
    for (std::size_t index = 0; index < count; ++index)
        tree(request).nodeTable().forget(forgotten[index].ino, forgotten[index].nlookup);
    fuse_reply_none(request);
}

void statistics(fuse_req_t request, fuse_ino_t)
{
    answer(request, [&] {
        const struct statvfs status = volumeStatus(core(request).space());
        fuse_reply_statfs(request, &status);
    });
}

// The server has no links and no special files.
void refuseSymbolicLink(fuse_req_t request, const char *, fuse_ino_t, const char *)
{
    fuse_reply_err(request, EPERM);
}

void refuseLink(fuse_req_t request, fuse_ino_t, fuse_ino_t, const char *)
{
    fuse_reply_err(request, EPERM);
}

void refuseSpecialFile(fuse_req_t request, fuse_ino_t, const char *, mode_t, dev_t)
{
    fuse_reply_err(request, EPERM);
}

fuse_lowlevel_ops table()
{
    fuse_lowlevel_ops operations = {};
    operations.init = initialise;
    operations.getattr = getAttributes;
    operations.setattr = setAttributes;
    operations.forget = forget;
    operations.forget_multi = forgetMany;
    operations.statfs = statistics;
    operations.symlink = refuseSymbolicLink;
    operations.link = refuseLink;
    operations.mknod = refuseSpecialFile;
    addFolderOperations(operations);
    addFileOperations(operations);
    return operations;
}

} // namespace

const fuse_lowlevel_ops &fuseOperations()
{
    static const fuse_lowlevel_ops operations = table();
    return operations;
}

} // namespace volume
