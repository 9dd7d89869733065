#pragma once

#include "volume/Node.h"

#include <QHash>

#include <functional>
#include <map>
#include <mutex>
#include <vector>

namespace volume
{

/// Inode numbers of everything the kernel holds on to. A document keeps its number over renaming and moving for as long
/// as it is remembered. Any thread; every operation is short.
class NodeTable
{
public:
    static constexpr Inode rootInode = 1;

    explicit NodeTable(const DocumentPointer &root);

    /// ESTALE for a number that is not known.
    Node node(Inode inode) const;
    /// The number of a document that a lookup found here; counts the lookup.
    Node remember(Inode parent, const DocumentPointer &document);
    /// A file that only exists here so far; counts a lookup and an open handle.
    Node addLocal(Inode parent, const QString &name, const std::shared_ptr<OpenFile> &file);
    /// Counts a lookup of a node that is known to exist.
    void look(Inode inode);
    /// The kernel gave up `count` of its lookups.
    void forget(Inode inode, quint64 count);

    /// The file that exists only here under that name.
    std::optional<Node> localChild(Inode parent, const QString &name) const;
    std::vector<Node> localChildren(Inode parent) const;

    /// Opens it once more; `make` is called, with the table locked, when it is not open yet.
    std::shared_ptr<OpenFile> acquireFile(Inode inode, const std::function<std::shared_ptr<OpenFile>()> &make);
    /// Closes it once; its state goes with the last close unless it has unsaved contents.
    void releaseFile(Inode inode);
    /// Nodes with unsaved contents.
    std::vector<Node> unsaved() const;

    /// The node is that document now, under its own name and parent.
    void setDocument(Inode inode, const DocumentPointer &document);
    /// The node is no document any more, and no file of its own either.
    void detach(Inode inode);
    void place(Inode inode, Inode parent, const QString &name);
    void setModified(Inode inode, qint64 modified);
    std::size_t size() const;

private:
    struct Entry {
        Node node;
        quint64 lookups = 0;
        int handles = 0;
        bool local = false;
    };
    Entry &entry(Inode inode);
    void dropIfUnused(Inode inode);
    void removeFromLocals(Entry &entry);

    mutable std::mutex mutex; ///< guards what follows
    QHash<Inode, std::shared_ptr<Entry>> entries;
    QHash<QString, Inode> byDocument;
    std::map<std::pair<Inode, QString>, Inode> locals;
    Inode lastInode = rootInode;
};

} // namespace volume
