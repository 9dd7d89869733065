#include "volume/NodeTable.h"

#include "volume/Errno.h"
#include "volume/OpenFile.h"

#include <cerrno>

namespace volume
{

NodeTable::NodeTable(const DocumentPointer &root)
{
    const auto made = std::make_shared<Entry>();
    made->node.inode = made->node.parent = rootInode;
    made->node.document = root;
    made->lookups = 1;
    entries.insert(rootInode, made);
    byDocument.insert(root->id, rootInode);
}

NodeTable::Entry &NodeTable::entry(Inode inode)
{
    const auto found = entries.constFind(inode);
    if (found == entries.constEnd())
        throw Errno{ESTALE};
    return **found;
}

Node NodeTable::node(Inode inode) const
{
    const std::lock_guard lock(mutex);
    const auto found = entries.constFind(inode);
    if (found == entries.constEnd())
        throw Errno{ESTALE};
    return (*found)->node;
}

Node NodeTable::remember(Inode parent, const DocumentPointer &document)
{
    const std::lock_guard lock(mutex);
    if (const auto known = byDocument.constFind(document->id); known != byDocument.constEnd()) {
        Entry &found = entry(*known);
        found.node.parent = parent;
        found.node.name = document->name;
        if (!found.node.document || found.node.document->rev != document->rev)
            found.node.modified.reset();
        found.node.document = document;
        ++found.lookups;
        return found.node;
    }
    const auto made = std::make_shared<Entry>();
    made->node.inode = ++lastInode;
    made->node.parent = parent;
    made->node.name = document->name;
    made->node.document = document;
    made->lookups = 1;
    entries.insert(made->node.inode, made);
    byDocument.insert(document->id, made->node.inode);
    return made->node;
}

Node NodeTable::addLocal(Inode parent, const QString &name, const std::shared_ptr<OpenFile> &file)
{
    const std::lock_guard lock(mutex);
    if (locals.count({parent, name}) != 0)
        throw Errno{EEXIST};
    const auto made = std::make_shared<Entry>();
    made->node.inode = ++lastInode;
    made->node.parent = parent;
    made->node.name = name;
    made->node.file = file;
    made->lookups = 1;
    made->handles = 1;
    made->local = true;
    entries.insert(made->node.inode, made);
    locals.emplace(std::pair(parent, name), made->node.inode);
    return made->node;
}

void NodeTable::look(Inode inode)
{
    const std::lock_guard lock(mutex);
    ++entry(inode).lookups;
}

void NodeTable::forget(Inode inode, quint64 count)
{
    const std::lock_guard lock(mutex);
    const auto found = entries.constFind(inode);
    if (found == entries.constEnd() || inode == rootInode)
        return;
    (*found)->lookups -= std::min(count, (*found)->lookups);
    dropIfUnused(inode);
}

void NodeTable::dropIfUnused(Inode inode)
{
    const Entry &unused = entry(inode);
    if (unused.lookups > 0 || unused.handles > 0 || unused.local || unused.node.file)
        return;
    if (unused.node.document)
        byDocument.remove(unused.node.document->id);
    entries.remove(inode);
}

std::optional<Node> NodeTable::localChild(Inode parent, const QString &name) const
{
    const std::lock_guard lock(mutex);
    const auto found = locals.find({parent, name});
    return found == locals.end() ? std::nullopt : std::optional((*entries.constFind(found->second))->node);
}

std::vector<Node> NodeTable::localChildren(Inode parent) const
{
    const std::lock_guard lock(mutex);
    std::vector<Node> found;
    for (auto local = locals.lower_bound({parent, QString()}); local != locals.end() && local->first.first == parent;
         ++local)
        found.push_back((*entries.constFind(local->second))->node);
    return found;
}

std::shared_ptr<OpenFile> NodeTable::acquireFile(Inode inode, const std::function<std::shared_ptr<OpenFile>()> &make)
{
    const std::lock_guard lock(mutex);
    Entry &opened = entry(inode);
    if (!opened.node.file)
        opened.node.file = make();
    ++opened.handles;
    return opened.node.file;
}

void NodeTable::releaseFile(Inode inode)
{
    const std::lock_guard lock(mutex);
    Entry &closed = entry(inode);
    if (closed.handles > 0)
        --closed.handles;
    if (closed.handles == 0 && closed.node.file && !closed.node.file->isUnsaved() && !closed.local)
        closed.node.file.reset();
    dropIfUnused(inode);
}

std::vector<Node> NodeTable::unsaved() const
{
    const std::lock_guard lock(mutex);
    std::vector<Node> found;
    for (const auto &each : entries)
        if (each->node.file && each->node.file->isUnsaved())
            found.push_back(each->node);
    return found;
}

void NodeTable::removeFromLocals(Entry &local)
{
    if (local.local)
        locals.erase({local.node.parent, local.node.name});
    local.local = false;
}

void NodeTable::setDocument(Inode inode, const DocumentPointer &document)
{
    const std::lock_guard lock(mutex);
    Entry &changed = entry(inode);
    removeFromLocals(changed);
    if (changed.node.document && changed.node.document->id != document->id)
        byDocument.remove(changed.node.document->id);
    if (!changed.node.document || changed.node.document->rev != document->rev)
        changed.node.modified.reset();
    changed.node.document = document;
    const auto other = byDocument.constFind(document->id);
    if (other != byDocument.constEnd() && *other != inode)
        entry(*other).node.document.reset();
    byDocument.insert(document->id, inode);
}

void NodeTable::detach(Inode inode)
{
    const std::lock_guard lock(mutex);
    Entry &gone = entry(inode);
    removeFromLocals(gone);
    if (gone.node.document)
        byDocument.remove(gone.node.document->id);
    gone.node.document.reset();
    if (gone.handles == 0)
        gone.node.file.reset();
    dropIfUnused(inode);
}

void NodeTable::place(Inode inode, Inode parent, const QString &name)
{
    const std::lock_guard lock(mutex);
    Entry &moved = entry(inode);
    if (moved.local) {
        locals.erase({moved.node.parent, moved.node.name});
        locals.emplace(std::pair(parent, name), inode);
    }
    moved.node.parent = parent;
    moved.node.name = name;
}

void NodeTable::setModified(Inode inode, qint64 modified)
{
    const std::lock_guard lock(mutex);
    entry(inode).node.modified = modified;
}

std::size_t NodeTable::size() const
{
    const std::lock_guard lock(mutex);
    return static_cast<std::size_t>(entries.size());
}

} // namespace volume
