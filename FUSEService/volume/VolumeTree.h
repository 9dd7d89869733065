#pragma once

#include "volume/DirectoryCache.h"
#include "volume/Names.h"
#include "volume/NodeTable.h"
#include "volume/OpenFile.h"

#include <QStringList>

namespace volume
{

/// The folders and files of the volume, by inode number: finding, making and removing. Any thread; throws Errno.
class VolumeTree
{
public:
    VolumeTree(FileServices services, DirectoryCache::Fetch listing, Names names,
               std::chrono::milliseconds listingLife);

    /// Counts a lookup. ENOENT when there is nothing of that name.
    Node lookup(Inode parent, const QString &name);
    /// The node as the server has it now, as far as listings that are still good can tell.
    Node current(Inode inode);
    /// What the folder holds; nothing of it is counted as looked up.
    struct Child {
        QString name;
        DocumentPointer document; ///< null: a file of this volume alone
        Inode local = 0;
    };
    std::vector<Child> list(Inode folder);
    /// Counts a lookup of what `list` told.
    Node rememberChild(Inode folder, const Child &child);

    /// A new file, looked up and open. EEXIST when there is one.
    Node createFile(Inode parent, const QString &name);
    Node createFolder(Inode parent, const QString &name);
    void removeFile(Inode parent, const QString &name);
    void removeFolder(Inode parent, const QString &name);

    /// Opens it once more; to be closed with `close`.
    std::shared_ptr<OpenFile> open(Inode inode);
    /// By name, without opening it: saved at once.
    void truncate(Inode inode, qint64 size);
    void setModified(Inode inode, qint64 modified);
    enum class Lock { Keep, Release };
    enum class Attempt {
        Again,       ///< also when saving the same contents failed before
        UnlessFailed ///< nobody is there to hear of a second failure
    };
    /// Saves what is unsaved; the lock is kept when that fails.
    void save(Inode inode, Lock lock, Attempt attempt = Attempt::Again);
    /// Closes it once; a writer's close saves what was written since its last attempt.
    enum class Closing { Reader, Writer };
    void close(Inode inode, Closing who);
    /// Tries to save everything.
    void saveAll();
    /// Paths, from the volume on, of the files whose contents are not on the server yet.
    QStringList unsavedPaths() const;
    /// Copies what could not be saved to that folder, which is made, and tells where in the log.
    void rescueUnsaved(const QString &folder);

    // For moving and renaming.
    NodeTable &nodeTable() { return nodes; }
    DirectoryCache &directoryCache() { return directories; }
    const FileServices &fileServices() const { return services; }
    const Names &nameRules() const { return names; }
    /// The folder to change something in; EACCES for the upper levels, which never change.
    Node changeableFolder(Inode inode);
    /// What stands under the name, nothing when nothing does. Counts a lookup.
    std::optional<Node> child(const Node &folder, const QString &name);
    bool isEmpty(const Node &folder);
    /// Takes a document away from the server, together with its node; whoever has it open keeps the contents.
    void removeDocument(const Node &folder, const Node &node);

private:
    class Looked;
    void saveSeized(const Node &node, OpenFile &file);
    Document upload(const Node &node, const Node &folder, OpenFile &file, qint64 modified);

    const FileServices services;
    const Names names;
    NodeTable nodes;
    DirectoryCache directories;
};

} // namespace volume
