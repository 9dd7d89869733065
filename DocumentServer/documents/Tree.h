#pragma once

#include "DocumentServer/Database.h"
#include "Node.h"

#include <QStringList>

#include <functional>
#include <optional>

namespace documentserver
{

/// Nothing lies deeper than so many folders below its entry document.
constexpr int deepestLevel = 400;

// Folders and files in storage. Changing functions run inside a transaction.

std::optional<Node> findNode(Database &database, qint64 id);
std::optional<Node> findNode(Database &database, const DocumentId &id);
std::optional<Node> findChild(Database &database, qint64 parent, const QString &name);

/// From the entry's root down to the node itself.
struct Step {
    qint64 id = 0;
    QString name;
};
QList<Step> stepsTo(Database &database, qint64 id);

/// In the order of their names; the taker must not use the database.
void eachChild(Database &database, qint64 parent, const std::function<void(const Node &)> &taker);
/// Names below `parent` that begin so.
QSet<QString> namesBeginning(Database &database, qint64 parent, const QString &beginning);
/// The name, or one made from it that nothing below `parent` but `except` has.
QString freeNameBelow(Database &database, qint64 parent, const QString &name, bool isFile, qint64 except = 0);

struct TreeSize {
    qint64 folders = 0; ///< without the folder itself
    qint64 files = 0;
    qint64 bytes = 0;
    qint64 levels = 0; ///< 0: nothing below
};
TreeSize sizeOfTree(Database &database, qint64 id);

/// Stores a new node and gives it its id.
void insertNode(Database &database, Node *node);
/// Stores name, parent, revision, size, times and editor of a node under a new tag, which it gets.
void updateNode(Database &database, Node *node);
/// Something inside the folder changed.
void touchFolder(Database &database, qint64 id, qint64 now);
/// Removes the node with all that is below it and marks contents that nothing needs any more for removal.
void removeTree(Database &database, qint64 id);

} // namespace documentserver
