#include "volume/Renaming.h"

#include "volume/Errno.h"

#include "api/ByteSource.h"

#include <QUuid>

#include <cerrno>

namespace volume
{
namespace
{

/// A name nobody else uses, for the moment between two steps.
QString passingName()
{
    return QStringLiteral(".quillbox-") + QUuid::createUuid().toString(QUuid::Id128);
}

} // namespace

Renaming::Renaming(VolumeTree &volumeTree, const End &oldEnd, const End &newEnd)
    : tree(volumeTree), from(oldEnd), to(newEnd), sourceFolder(tree.changeableFolder(from.folder)),
      targetFolder(tree.changeableFolder(to.folder)), source(tree.child(sourceFolder, from.name))
{
    target = tree.child(targetFolder, to.name);
}

Renaming::~Renaming()
{
    for (const std::optional<Node> &node : {source, target})
        if (node)
            tree.nodeTable().forget(node->inode, 1);
}

void Renaming::run(bool keepExisting)
{
    check(keepExisting);
    if (target && target->inode == source->inode)
        return;
    std::unique_lock<std::mutex> seized;
    bool becomesShared = false;
    if (source->file) {
        seized = source->file->seize();
        source = tree.nodeTable().node(source->inode); // it may have been saved meanwhile
        becomesShared = source->file->isLocalOnly() && tree.nameRules().useFor(to.name) == Names::Use::Shared;
        if (becomesShared)
            source->file->becomeShared();
    }
    if (!source->document && !(target && target->document))
        placeLocal();
    else if (target && target->document && target->document->isFile())
        handOver();
    else if (target)
        replaceByName();
    else
        moveDocument();
    if (!becomesShared)
        return;
    seized.unlock();
    tree.save(source->inode, VolumeTree::Lock::Release);
}

void Renaming::check(bool keepExisting) const
{
    if (!source)
        throw Errno{ENOENT};
    if (source->document && !source->document->isOrdinary())
        throw Errno{EACCES};
    tree.nameRules().useFor(to.name);
    if (target && keepExisting)
        throw Errno{EEXIST};
    if (target)
        checkTarget();
}

void Renaming::checkTarget() const
{
    const bool sourceIsFolder = source->document && !source->document->isFile();
    const bool targetIsFolder = target->document && !target->document->isFile();
    if (targetIsFolder && !sourceIsFolder)
        throw Errno{EISDIR};
    if (!targetIsFolder && sourceIsFolder)
        throw Errno{ENOTDIR};
    if (!targetIsFolder)
        return;
    tree.directoryCache().expire(target->document->id);
    if (!tree.isEmpty(*target))
        throw Errno{ENOTEMPTY};
}

/// Nothing of it is on the server.
void Renaming::placeLocal()
{
    if (target)
        tree.removeDocument(targetFolder, *target);
    tree.nodeTable().place(source->inode, to.folder, to.name);
}

void Renaming::handOver()
{
    const qint64 size = source->file ? source->file->look().size : source->document->size;
    if (!source->document || size <= simpleSize)
        giveContents();
    else
        replaceByName();
}

/// The target's document gets the source's contents and goes on under the source's inode number.
void Renaming::giveContents()
{
    const FileServices &services = tree.fileServices();
    const auto file = source->file ? source->file : std::make_shared<OpenFile>(services, source->document);
    const WriteStage &stage = file->wholeStage();
    if (target->file) { // who has the old contents open keeps them
        const auto seized = target->file->seize();
        target->file->wholeStage();
        target->file->becomeRemoved();
    }
    FileSource contents(stage.descriptor(), stage.size());
    const QString id = target->document->id;
    services.store.lock(id);
    Document document;
    try {
        document = services.store.replaceContents(id, contents, file->look().modified);
    } catch (const Errno &) {
        services.store.unlock(id);
        throw;
    }
    services.store.unlock(id);
    document.name = to.name;
    const DocumentPointer old = source->document;
    if (old) {
        file->releaseLock();
        services.store.remove(*old);
        tree.directoryCache().remove(sourceFolder.document->id, from.name);
    }
    const auto stored = std::make_shared<const Document>(document);
    tree.directoryCache().put(targetFolder.document->id, stored);
    tree.nodeTable().detach(target->inode);
    tree.nodeTable().place(source->inode, to.folder, to.name);
    tree.nodeTable().setDocument(source->inode, stored);
    file->saved(stored);
}

/// Puts the target aside, moves the source and then takes the target away; puts it back when the move fails.
void Renaming::replaceByName()
{
    if (!target->document) {
        tree.removeDocument(targetFolder, *target);
        moveDocument();
        return;
    }
    DocumentStore &store = tree.fileServices().store;
    const QString aside = passingName();
    store.rename(*target->document, aside);
    tree.directoryCache().remove(targetFolder.document->id, to.name);
    try {
        moveDocument();
    } catch (const Errno &) {
        store.rename(*target->document, to.name);
        tree.directoryCache().put(targetFolder.document->id, target->document);
        throw;
    }
    Node old = *target;
    old.name = aside;
    tree.removeDocument(targetFolder, old);
}

void Renaming::moveDocument()
{
    Document document = *source->document;
    moveInSteps(document);
    const auto moved = [&] {
        document.name = to.name;
        return std::make_shared<const Document>(document);
    }();
    tree.directoryCache().put(targetFolder.document->id, moved);
    tree.nodeTable().place(source->inode, to.folder, to.name);
    tree.nodeTable().setDocument(source->inode, moved);
    tree.directoryCache().remove(sourceFolder.document->id, from.name);
}

/// Folder and name change by two calls. Under a passing name neither can meet a document of the same name on its way.
void Renaming::moveInSteps(const Document &document)
{
    DocumentStore &store = tree.fileServices().store;
    if (from.folder == to.folder) {
        store.rename(document, to.name);
        return;
    }
    const bool sameName = from.name == to.name;
    if (!sameName)
        store.rename(document, passingName());
    try {
        store.move(document, targetFolder.document->id);
    } catch (const Errno &) {
        if (!sameName)
            store.rename(document, from.name);
        throw;
    }
    if (sameName)
        return;
    try {
        store.rename(document, to.name);
    } catch (const Errno &) {
        store.move(document, sourceFolder.document->id);
        store.rename(document, from.name);
        throw;
    }
}

} // namespace volume
