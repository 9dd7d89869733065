#include "Revisions.h"

namespace documentserver
{

namespace
{
Revision revisionOf(const QVariantList &row)
{
    return {row[0].toLongLong(), row[1].toString(), row[2].toLongLong(), row[3].toLongLong(),
            row[4].toLongLong(), row[5].toString(), row[6].toString()};
}

void forgetOld(Database &database, qint64 node, qint64 most)
{
    database.run("INSERT OR IGNORE INTO removals SELECT content FROM revisions WHERE node = ?1 AND content <> '' AND id"
                 " NOT IN (SELECT id FROM revisions WHERE node = ?1 ORDER BY id DESC LIMIT ?2)",
                 {node, most});
    database.run("DELETE FROM revisions WHERE node = ?1 AND id NOT IN"
                 " (SELECT id FROM revisions WHERE node = ?1 ORDER BY id DESC LIMIT ?2)",
                 {node, most});
}
} // namespace

QList<Revision> revisionsOf(Database &database, qint64 node)
{
    QList<Revision> revisions;
    database.each("SELECT id, name, size, modified, clientmodified, editor, content FROM revisions WHERE node = ?"
                  " ORDER BY id DESC",
                  {node}, [&revisions](const QVariantList &row) { revisions.append(revisionOf(row)); });
    return revisions;
}

std::optional<Revision> findRevision(Database &database, qint64 node, qint64 revision)
{
    const auto rows = database.run("SELECT id, name, size, modified, clientmodified, editor, content FROM revisions"
                                   " WHERE node = ? AND id = ?",
                                   {node, revision});
    return rows.isEmpty() ? std::nullopt : std::optional(revisionOf(rows[0]));
}

void addRevision(Database &database, Node *node, Revision *revision, qint64 most)
{
    database.run("INSERT INTO revisions(node, name, size, modified, clientmodified, editor, content)"
                 " VALUES(?, ?, ?, ?, ?, ?, ?)",
                 {node->id, revision->name, revision->size, revision->modified, revision->clientModified,
                  revision->editor, revision->content});
    revision->id = database.lastId();
    node->revision = revision->id;
    node->size = revision->size;
    node->modified = revision->modified;
    node->clientModified = revision->clientModified;
    node->editor = revision->editor;
    updateNode(database, node);
    forgetOld(database, node->id, most);
}

bool isContentInUse(Database &database, const QString &content)
{
    return !database.run("SELECT 1 FROM revisions WHERE content = ? LIMIT 1", {content}).isEmpty();
}

QStringList contentsToRemove(Database &database)
{
    QStringList contents;
    database.each("SELECT content FROM removals", {},
                  [&contents](const QVariantList &row) { contents.append(row[0].toString()); });
    return contents;
}

void forgetRemoval(Database &database, const QString &content)
{
    database.run("DELETE FROM removals WHERE content = ?", {content});
}

void keepContentsInUse(Database &database)
{
    database.run("DELETE FROM removals WHERE EXISTS"
                 " (SELECT 1 FROM revisions WHERE revisions.content = removals.content)");
}

} // namespace documentserver
