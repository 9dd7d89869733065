#pragma once

#include "Tree.h"

namespace documentserver
{

// What files contained over time. Changing functions run inside a transaction.

/// Newest first.
QList<Revision> revisionsOf(Database &database, qint64 node);
std::optional<Revision> findRevision(Database &database, qint64 node, qint64 revision);
/// Makes it the current content of the file, gives it its id, and forgets all but the newest `most`.
void addRevision(Database &database, Node *node, Revision *revision, qint64 most);

bool isContentInUse(Database &database, const QString &content);
/// Contents that nothing needs any more, and whose files may still be there.
QStringList contentsToRemove(Database &database);
void forgetRemoval(Database &database, const QString &content);
/// Takes back what is in use after all, because several revisions may share a content.
void keepContentsInUse(Database &database);

} // namespace documentserver
