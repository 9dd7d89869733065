#include "volume/Errno.h"
#include "volume/VolumeTree.h"

#include <cerrno>

namespace volume
{

/// Gives back the lookup that `child` counted for this call's own use.
class VolumeTree::Looked
{
public:
    Looked(NodeTable &table, const std::optional<Node> &found) : nodes(table), inode(found ? found->inode : 0) {}
    ~Looked()
    {
        if (inode != 0)
            nodes.forget(inode, 1);
    }
    Looked(const Looked &) = delete;
    Looked &operator=(const Looked &) = delete;

private:
    NodeTable &nodes;
    const Inode inode;
};

Node VolumeTree::createFile(Inode parent, const QString &name)
{
    const Node folder = changeableFolder(parent);
    const Names::Use use = names.useFor(name);
    const std::optional<Node> existing = child(folder, name);
    const Looked looked(nodes, existing);
    if (existing)
        throw Errno{EEXIST};
    const auto life = use == Names::Use::LocalOnly ? OpenFile::Life::LocalOnly : OpenFile::Life::Shared;
    return nodes.addLocal(parent, name, std::make_shared<OpenFile>(services, life));
}

Node VolumeTree::createFolder(Inode parent, const QString &name)
{
    const Node folder = changeableFolder(parent);
    if (names.useFor(name) == Names::Use::LocalOnly)
        throw Errno{EPERM}; // only files can be kept to this volume alone
    const std::optional<Node> existing = child(folder, name);
    const Looked looked(nodes, existing);
    if (existing)
        throw Errno{EEXIST};
    const auto made = std::make_shared<const Document>(services.store.createFolder(folder.document->id, name));
    directories.put(folder.document->id, made);
    return nodes.remember(parent, made);
}

void VolumeTree::removeFile(Inode parent, const QString &name)
{
    const Node folder = nodes.node(parent);
    const std::optional<Node> found = child(folder, name);
    const Looked looked(nodes, found);
    if (!found)
        throw Errno{ENOENT};
    if (found->document && !found->document->isFile())
        throw Errno{EISDIR};
    removeDocument(changeableFolder(parent), *found);
}

void VolumeTree::removeFolder(Inode parent, const QString &name)
{
    const Node folder = nodes.node(parent);
    const std::optional<Node> found = child(folder, name);
    const Looked looked(nodes, found);
    if (!found)
        throw Errno{ENOENT};
    if (!found->document || found->document->isFile())
        throw Errno{ENOTDIR};
    const Node changed = changeableFolder(parent);
    directories.expire(found->document->id); // what others put there meanwhile is not to be lost
    if (!isEmpty(*found))
        throw Errno{ENOTEMPTY};
    removeDocument(changed, *found);
}

void VolumeTree::removeDocument(const Node &folder, const Node &found)
{
    std::unique_lock<std::mutex> seized;
    if (found.file) {
        seized = found.file->seize();
        found.file->wholeStage();
    }
    const Node node = nodes.node(found.inode); // it may have been saved while its contents were busy
    if (node.document) {
        if (node.file)
            node.file->releaseLock();
        try {
            services.store.remove(*node.document);
        } catch (const Errno &failure) {
            if (failure.code != ENOENT)
                throw;
        }
        directories.remove(folder.document->id, found.name);
    }
    if (found.file)
        found.file->becomeRemoved();
    nodes.detach(found.inode);
}

} // namespace volume
