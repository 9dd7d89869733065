#include "volume/FuseAnswer.h"
#include "volume/FuseOperations.h"
#include "volume/Renaming.h"

#include <QByteArray>

#include <memory>
#include <vector>

#include <linux/fs.h>

namespace volume
{
namespace
{
using namespace answering;

/// A folder as it was when somebody opened it.
struct OpenFolder {
    Inode inode = 0;
    Inode parent = 0;
    std::vector<VolumeTree::Child> children;
};

OpenFolder &openFolder(const fuse_file_info *info)
{
    return *reinterpret_cast<OpenFolder *>(info->fh);
}

void lookup(fuse_req_t request, fuse_ino_t parent, const char *name)
{
    answer(request, [&] {
        try {
            replyEntry(request, tree(request).lookup(parent, Names::fromProgram(name)));
        } catch (const Errno &failure) {
            if (failure.code != ENOENT)
                throw;
            fuse_entry_param nothing = {}; // the kernel may remember that, too
            nothing.entry_timeout = kernelLife;
            fuse_reply_entry(request, &nothing);
        }
    });
}

void openDirectory(fuse_req_t request, fuse_ino_t inode, fuse_file_info *info)
{
    answer(request, [&] {
        auto folder = std::make_unique<OpenFolder>();
        folder->inode = inode;
        folder->parent = tree(request).nodeTable().node(inode).parent;
        folder->children = tree(request).list(inode);
        info->fh = reinterpret_cast<std::uint64_t>(folder.get());
        if (fuse_reply_open(request, info) == 0)
            static_cast<void>(folder.release());
    });
}

void releaseDirectory(fuse_req_t request, fuse_ino_t, fuse_file_info *info)
{
    delete &openFolder(info);
    fuse_reply_err(request, 0);
}

/// Fills one answer with as many names as fit, from `offset` on: "." and "..", then the children.
class Page
{
public:
    Page(fuse_req_t asking, std::size_t room, bool withAttributes)
        : request(asking), full(withAttributes), buffer(static_cast<qsizetype>(room), Qt::Uninitialized)
    {
    }

    void fill(const OpenFolder &folder, off_t offset)
    {
        const off_t end = static_cast<off_t>(folder.children.size()) + 2;
        for (; offset < end; ++offset)
            if (!(offset < 2 ? addSelf(folder, offset) : addChild(folder, offset)))
                return;
    }
    void send() { fuse_reply_buf(request, buffer.constData(), used); }

private:
    bool addSelf(const OpenFolder &folder, off_t offset)
    {
        fuse_entry_param entry = {};
        entry.attr.st_ino = offset == 0 ? folder.inode : folder.parent;
        entry.attr.st_mode = S_IFDIR;
        return add(offset == 0 ? "." : "..", entry, offset);
    }
    bool addChild(const OpenFolder &folder, off_t offset)
    {
        const VolumeTree::Child &child = folder.children[static_cast<std::size_t>(offset) - 2];
        const QByteArray name = child.name.toUtf8();
        fuse_entry_param entry = {};
        entry.attr.st_ino = child.local != 0 ? child.local : ~fuse_ino_t(0);
        entry.attr.st_mode = child.document && !child.document->isFile() ? S_IFDIR : S_IFREG;
        if (!full)
            return add(name, entry, offset);
        if (!fits(name))
            return false;
        try {
            const Node node = tree(request).rememberChild(folder.inode, child);
            return add(name, entryFor(request, node), offset);
        } catch (const Errno &) {
            return true; // a file of this volume alone that is gone by now
        }
    }
    bool fits(const QByteArray &name) const
    {
        return fuse_add_direntry_plus(request, nullptr, 0, name.constData(), nullptr, 0) <= left();
    }
    bool add(const QByteArray &name, const fuse_entry_param &entry, off_t offset)
    {
        char *const place = buffer.data() + used;
        const std::size_t size =
            full ? fuse_add_direntry_plus(request, place, left(), name.constData(), &entry, offset + 1)
                 : fuse_add_direntry(request, place, left(), name.constData(), &entry.attr, offset + 1);
        if (size > left())
            return false;
        used += size;
        return true;
    }
    std::size_t left() const { return static_cast<std::size_t>(buffer.size()) - used; }

    const fuse_req_t request;
    const bool full;
    QByteArray buffer;
    std::size_t used = 0;
};

void readDirectory(fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset, fuse_file_info *info)
{
    answer(request, [&] {
        Page page(request, size, false);
        page.fill(openFolder(info), offset);
        page.send();
    });
}

void readDirectoryPlus(fuse_req_t request, fuse_ino_t, std::size_t size, off_t offset, fuse_file_info *info)
{
    answer(request, [&] {
        Page page(request, size, true);
        page.fill(openFolder(info), offset);
        page.send();
    });
}

void makeDirectory(fuse_req_t request, fuse_ino_t parent, const char *name, mode_t)
{
    answer(request, [&] { replyEntry(request, tree(request).createFolder(parent, Names::fromProgram(name))); });
}

void unlinkFile(fuse_req_t request, fuse_ino_t parent, const char *name)
{
    answer(request, [&] {
        tree(request).removeFile(parent, Names::fromProgram(name));
        fuse_reply_err(request, 0);
    });
}

void removeDirectory(fuse_req_t request, fuse_ino_t parent, const char *name)
{
    answer(request, [&] {
        tree(request).removeFolder(parent, Names::fromProgram(name));
        fuse_reply_err(request, 0);
    });
}

void renameEntry(fuse_req_t request, fuse_ino_t parent, const char *name, fuse_ino_t newParent, const char *newName,
                 unsigned flags)
{
    answer(request, [&] {
        if ((flags & ~static_cast<unsigned>(RENAME_NOREPLACE)) != 0)
            throw Errno{EINVAL};
        Renaming(tree(request), {parent, Names::fromProgram(name)}, {newParent, Names::fromProgram(newName)})
            .run((flags & RENAME_NOREPLACE) != 0);
        fuse_reply_err(request, 0);
    });
}

void syncDirectory(fuse_req_t request, fuse_ino_t, int, fuse_file_info *)
{
    fuse_reply_err(request, 0); // folders change on the server at once
}

} // namespace

void addFolderOperations(fuse_lowlevel_ops &operations)
{
    operations.lookup = lookup;
    operations.opendir = openDirectory;
    operations.releasedir = releaseDirectory;
    operations.readdir = readDirectory;
    operations.readdirplus = readDirectoryPlus;
    operations.mkdir = makeDirectory;
    operations.unlink = unlinkFile;
    operations.rmdir = removeDirectory;
    operations.rename = renameEntry;
    operations.fsyncdir = syncDirectory;
}

} // namespace volume
