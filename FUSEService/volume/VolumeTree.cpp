#include "volume/VolumeTree.h"

#include "volume/Errno.h"

#include "api/ByteSource.h"
#include "platform/Log.h"

#include <QDir>
#include <QUuid>

#include <algorithm>
#include <cerrno>

namespace volume
{
namespace
{

DocumentPointer rootDocument()
{
    Document root;
    root.kind = Document::Kind::Root;
    root.id = QStringLiteral("root");
    return std::make_shared<const Document>(root);
}

const Document &folderDocument(const Node &node)
{
    if (!node.document)
        throw Errno{node.file ? ENOTDIR : ENOENT};
    if (node.document->isFile())
        throw Errno{ENOTDIR};
    return *node.document;
}

} // namespace

VolumeTree::VolumeTree(FileServices fileServices, DirectoryCache::Fetch listing, Names nameRules,
                       std::chrono::milliseconds listingLife)
    : services(std::move(fileServices)), names(std::move(nameRules)), nodes(rootDocument()),
      directories(std::move(listing), listingLife)
{
}

std::optional<Node> VolumeTree::child(const Node &folder, const QString &name)
{
    const Document &document = folderDocument(folder);
    if (const auto local = nodes.localChild(folder.inode, name)) {
        nodes.look(local->inode);
        return local;
    }
    const DocumentPointer found = directories.find(document, name);
    return found ? std::optional(nodes.remember(folder.inode, found)) : std::nullopt;
}

Node VolumeTree::lookup(Inode parent, const QString &name)
{
    const std::optional<Node> found = child(nodes.node(parent), name);
    if (!found)
        throw Errno{ENOENT};
    return *found;
}

Node VolumeTree::current(Inode inode)
{
    const Node node = nodes.node(inode);
    if (!node.document || node.inode == NodeTable::rootInode || node.file)
        return node;
    const Node parent = nodes.node(node.parent);
    const DocumentPointer now = directories.find(folderDocument(parent), node.name);
    if (!now || now->id != node.document->id)
        throw Errno{ESTALE}; // the kernel looks its path up again
    const Node updated = nodes.remember(node.parent, now);
    nodes.forget(updated.inode, 1);
    return updated;
}

std::vector<VolumeTree::Child> VolumeTree::list(Inode inode)
{
    const Node folder = nodes.node(inode);
    const auto listing = directories.list(folderDocument(folder));
    std::vector<Child> children;
    children.reserve(listing->size());
    const std::vector<Node> locals = nodes.localChildren(inode);
    for (const Node &local : locals)
        children.push_back({local.name, nullptr, local.inode});
    for (const DocumentPointer &document : *listing) {
        const auto hides = [&](const Node &local) { return local.name == document->name; };
        if (std::none_of(locals.begin(), locals.end(), hides))
            children.push_back({document->name, document, 0});
    }
    return children;
}

Node VolumeTree::rememberChild(Inode folder, const Child &child)
{
    if (child.document)
        return nodes.remember(folder, child.document);
    nodes.look(child.local);
    return nodes.node(child.local);
}

Node VolumeTree::changeableFolder(Inode inode)
{
    Node folder = nodes.node(inode);
    if (!folderDocument(folder).holdsDocuments())
        throw Errno{EACCES};
    return folder;
}

bool VolumeTree::isEmpty(const Node &folder)
{
    return list(folder.inode).empty();
}

std::shared_ptr<OpenFile> VolumeTree::open(Inode inode)
{
    const Node node = nodes.node(inode);
    if (node.document && !node.document->isFile())
        throw Errno{EISDIR};
    if (!node.document && !node.file)
        throw Errno{ESTALE};
    const auto make = [&] { return std::make_shared<OpenFile>(services, node.document); };
    auto file = nodes.acquireFile(inode, make);
    file->opened(node.document);
    return file;
}

void VolumeTree::setModified(Inode inode, qint64 modified)
{
    const Node node = nodes.node(inode);
    if (!node.file || !node.file->setModified(modified))
        nodes.setModified(inode, modified);
}

void VolumeTree::truncate(Inode inode, qint64 size)
{
    const auto file = open(inode);
    try {
        file->truncate(size);
        save(inode, Lock::Release);
    } catch (const Errno &) {
        nodes.releaseFile(inode);
        throw;
    }
    nodes.releaseFile(inode);
}

void VolumeTree::close(Inode inode, Closing who)
{
    try {
        if (who == Closing::Writer)
            save(inode, Lock::Release, Attempt::UnlessFailed);
    } catch (const Errno &) {
        // Told to the program by its close already where there was one; the contents stay and are tried again.
    }
    nodes.releaseFile(inode);
}

void VolumeTree::saveAll()
{
    for (const Node &node : nodes.unsaved()) {
        try {
            save(node.inode, Lock::Release);
        } catch (const Errno &) {
            // Logged where it failed.
        }
    }
}

QStringList VolumeTree::unsavedPaths() const
{
    QStringList paths;
    for (Node node : nodes.unsaved()) {
        try {
            QStringList steps{node.name};
            while (node.parent != NodeTable::rootInode) {
                node = nodes.node(node.parent);
                steps.prepend(node.name);
            }
            paths.append(steps.join(u'/'));
        } catch (const Errno &) {
            // It lost its place meanwhile.
        }
    }
    return paths;
}

void VolumeTree::rescueUnsaved(const QString &folder)
{
    for (const Node &node : nodes.unsaved()) {
        const auto seized = node.file->seize();
        const QString path = folder + u'/' + QUuid::createUuid().toString(QUuid::Id128).left(8) + u'-' + node.name;
        const bool kept = QDir().mkpath(folder) && node.file->copyStage(path);
        platform::log(QStringLiteral("FUSEService: %1 could not be saved; what was written is in %2")
                          .arg(node.name, kept ? path : QStringLiteral("no place: copying it failed, too")));
    }
}

void VolumeTree::save(Inode inode, Lock lock, Attempt attempt)
{
    const auto file = nodes.node(inode).file;
    if (!file)
        return;
    const auto seized = file->seize();
    if (file->needsSaving() && file->failedAlready() && attempt == Attempt::UnlessFailed)
        return;
    try {
        if (file->needsSaving())
            saveSeized(nodes.node(inode), *file);
    } catch (const Errno &) {
        file->noteFailedSaving();
        throw;
    }
    if (lock == Lock::Release)
        file->releaseLock();
}

void VolumeTree::saveSeized(const Node &node, OpenFile &file)
{
    const Node folder = nodes.node(node.parent);
    const qint64 modified = file.look().modified;
    Document document = upload(node, folder, file, modified);
    document.name = node.name;
    const auto stored = std::make_shared<const Document>(document);
    // In this order, so that the name is found at every moment.
    directories.put(folderDocument(folder).id, stored);
    nodes.setDocument(node.inode, stored);
    file.saved(stored);
}

Document VolumeTree::upload(const Node &node, const Node &folder, OpenFile &file, qint64 modified)
{
    const WriteStage &stage = file.wholeStage();
    FileSource source(stage.descriptor(), stage.size());
    if (node.document) {
        try {
            return services.store.replaceContents(node.document->id, source, modified);
        } catch (const Errno &failure) {
            if (failure.code != ENOENT)
                throw;
            // Somebody removed it meanwhile: what was written here comes back as a new file.
        }
    }
    return services.store.createFile(folderDocument(folder).id, node.name, source, modified);
}

} // namespace volume
