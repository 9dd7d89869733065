#include "volume/FuseAnswer.h"
#include "volume/FuseOperations.h"

#include <memory>
#include <vector>

#include <fcntl.h>
#include <sys/uio.h>

namespace volume
{
namespace
{
using namespace answering;

FileHandle &handleOf(const fuse_file_info *info)
{
    return *reinterpret_cast<FileHandle *>(info->fh);
}

/// Kept before the kernel knows it, for it may be closed at once.
void keepHandle(fuse_req_t request, const std::shared_ptr<OpenFile> &file, fuse_file_info *info)
{
    auto handle = std::make_unique<FileHandle>();
    handle->file = file;
    handle->writes = (info->flags & O_ACCMODE) != O_RDONLY;
    info->fh = reinterpret_cast<std::uint64_t>(core(request).handles().keep(std::move(handle)));
}

void closeHandle(fuse_req_t request, fuse_ino_t inode, const fuse_file_info *info)
{
    const std::unique_ptr<FileHandle> handle = core(request).handles().take(&handleOf(info));
    tree(request).close(inode, handle->writes ? VolumeTree::Closing::Writer : VolumeTree::Closing::Reader);
}

void openFile(fuse_req_t request, fuse_ino_t inode, fuse_file_info *info)
{
    answer(request, [&] {
        VolumeTree &files = tree(request);
        const auto file = files.open(inode);
        const bool writes = (info->flags & O_ACCMODE) != O_RDONLY;
        try {
            if (writes && (info->flags & O_TRUNC) != 0)
                file->truncate(0);
        } catch (const Errno &) {
            files.close(inode, VolumeTree::Closing::Reader);
            throw;
        }
        keepHandle(request, file, info);
        if (fuse_reply_open(request, info) != 0)
            closeHandle(request, inode, info);
    });
}

void createFile(fuse_req_t request, fuse_ino_t parent, const char *name, mode_t, fuse_file_info *info)
{
    answer(request, [&] {
        VolumeTree &files = tree(request);
        const Node node = files.createFile(parent, Names::fromProgram(name));
        keepHandle(request, node.file, info);
        const fuse_entry_param entry = entryFor(request, node);
        if (fuse_reply_create(request, &entry, info) == 0)
            return;
        closeHandle(request, node.inode, info);
        files.nodeTable().forget(node.inode, 1);
    });
}

void readFile(fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset, fuse_file_info *info)
{
    answer(request, [&] {
        FileHandle &handle = handleOf(info);
        const Slices slices = handle.file->read(offset, static_cast<qint64>(size), handle.readAhead);
        std::vector<iovec> parts;
        for (const Slice &slice : slices)
            parts.push_back({const_cast<char *>(slice.bytes), static_cast<std::size_t>(slice.length)});
        fuse_reply_iov(request, parts.data(), static_cast<int>(parts.size()));
    });
}

void writeFile(fuse_req_t request, fuse_ino_t, const char *bytes, std::size_t size, off_t offset, fuse_file_info *info)
{
    answer(request, [&] {
        handleOf(info).file->write(offset, bytes, static_cast<qint64>(size));
        fuse_reply_write(request, size);
    });
}

void flushFile(fuse_req_t request, fuse_ino_t inode, fuse_file_info *info)
{
    answer(request, [&] {
        if (handleOf(info).writes)
            tree(request).save(inode, VolumeTree::Lock::Release);
        fuse_reply_err(request, 0);
    });
}

void syncFile(fuse_req_t request, fuse_ino_t inode, int, fuse_file_info *)
{
    answer(request, [&] {
        tree(request).save(inode, VolumeTree::Lock::Keep);
        fuse_reply_err(request, 0);
    });
}

void releaseFile(fuse_req_t request, fuse_ino_t inode, fuse_file_info *info)
{
    answer(request, [&] {
        closeHandle(request, inode, info);
        fuse_reply_err(request, 0);
    });
}

} // namespace

void addFileOperations(fuse_lowlevel_ops &operations)
{
    operations.open = openFile;
    operations.create = createFile;
    operations.read = readFile;
    operations.write = writeFile;
    operations.flush = flushFile;
    operations.fsync = syncFile;
    operations.release = releaseFile;
}

} // namespace volume
