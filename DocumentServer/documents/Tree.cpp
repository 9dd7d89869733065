#include "Tree.h"

#include "DocumentNames.h"

#include <QSet>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
#define NODE_COLUMNS                                                                                                   \
    "id, parent, home, name, type, revision, tag, size, modified, clientmodified, created, creator, creatoraccount, "  \
    "editor"

Node nodeOf(const QVariantList &row)
{
    Node node;
    node.id = row[0].toLongLong();
    node.parent = row[1].toLongLong();
    node.home = row[2].toString();
    node.name = row[3].toString();
    node.isFile = row[4].toLongLong() == 1;
    node.revision = row[5].toLongLong();
    node.tag = row[6].toLongLong();
    node.size = row[7].toLongLong();
    node.modified = row[8].toLongLong();
    node.clientModified = row[9].toLongLong();
    node.created = row[10].toLongLong();
    node.creator = row[11].toString();
    node.creatorAccount = row[12].toString();
    node.editor = row[13].toString();
    return node;
}

std::optional<Node> firstNode(const QList<QVariantList> &rows)
{
    return rows.isEmpty() ? std::nullopt : std::optional(nodeOf(rows[0]));
}
} // namespace

std::optional<Node> findNode(Database &database, qint64 id)
{
    return firstNode(database.run("SELECT " NODE_COLUMNS " FROM nodes WHERE id = ?", {id}));
}

std::optional<Node> findNode(Database &database, const DocumentId &id)
{
    if (id.node == 0)
        return firstNode(database.run(
            "SELECT " NODE_COLUMNS " FROM nodes WHERE id = (SELECT root FROM entries WHERE key = ?)", {id.key}));
    return firstNode(database.run("SELECT " NODE_COLUMNS " FROM nodes WHERE id = ? AND home = ? AND parent NOT NULL",
                                  {id.node, id.key}));
}

std::optional<Node> findChild(Database &database, qint64 parent, const QString &name)
{
    return firstNode(database.run("SELECT " NODE_COLUMNS " FROM nodes WHERE parent = ? AND name = ?", {parent, name}));
}

QList<Step> stepsTo(Database &database, qint64 id)
{
    QList<Step> steps;
    database.each("WITH RECURSIVE up(id, parent, name, level) AS (SELECT id, parent, name, 0 FROM nodes WHERE id = ?"
                  " UNION ALL SELECT n.id, n.parent, n.name, up.level + 1 FROM nodes n JOIN up ON n.id = up.parent)"
                  " SELECT id, name FROM up ORDER BY level DESC",
                  {id}, [&steps](const QVariantList &row) {
                      steps.append({row[0].toLongLong(), row[1].toString()});
                  });
    return steps;
}

void eachChild(Database &database, qint64 parent, const std::function<void(const Node &)> &taker)
{
    database.each("SELECT " NODE_COLUMNS " FROM nodes WHERE parent = ? ORDER BY name", {parent},
                  [&taker](const QVariantList &row) { taker(nodeOf(row)); });
}

QSet<QString> namesBeginning(Database &database, qint64 parent, const QString &beginning)
{
    QSet<QString> names;
    const QByteArray first = beginning.toUtf8();
    // Names are compared by their UTF-8 bytes, of which 0xff is none.
    database.each("SELECT name FROM nodes WHERE parent = ?1 AND name >= ?2 AND name < CAST(?3 AS TEXT)",
                  {parent, beginning, first + '\xff'},
                  [&names](const QVariantList &row) { names.insert(row[0].toString()); });
    return names;
}

QString freeNameBelow(Database &database, qint64 parent, const QString &name, bool isFile, qint64 except)
{
    const auto holder = findChild(database, parent, name);
    if (!holder || holder->id == except)
        return name;
    // Numbered names begin like the name itself, shortened ones with a part of it.
    const QString stem = splitName(name, isFile).stem;
    QString common = stem.left(stem.toUtf8().size() > 200 ? stem.size() / 2 : stem.size());
    if (!common.isEmpty() && common.back().isHighSurrogate())
        common.chop(1);
    QSet<QString> taken = namesBeginning(database, parent, common);
    taken.insert(name);
    return freeName(name, isFile, taken);
}

TreeSize sizeOfTree(Database &database, qint64 id)
{
    const auto rows =
        database.run("WITH RECURSIVE below(id, type, size, level) AS (SELECT id, type, size, 0 FROM nodes WHERE id = ?"
                     " UNION ALL SELECT n.id, n.type, n.size, below.level + 1"
                     " FROM nodes n JOIN below ON n.parent = below.id)"
                     " SELECT SUM(type = 0 AND level > 0), SUM(type = 1), SUM(MAX(size, 0)), MAX(level) FROM below",
                     {id});
    return {rows[0][0].toLongLong(), rows[0][1].toLongLong(), rows[0][2].toLongLong(), rows[0][3].toLongLong()};
}

void insertNode(Database &database, Node *node)
{
    node->tag = newTag();
    database.run("INSERT INTO nodes(parent, home, name, type, revision, tag, size, modified, clientmodified, created,"
                 " creator, creatoraccount, editor) VALUES(NULLIF(?, 0), ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
                 {node->parent, node->home, node->name, node->isFile ? 1 : 0, node->revision, node->tag, node->size,
                  node->modified, node->clientModified, node->created, node->creator, node->creatorAccount,
                  node->editor});
    node->id = database.lastId();
}

void updateNode(Database &database, Node *node)
{
    node->tag = newTag();
    database.run("UPDATE nodes SET parent = NULLIF(?, 0), name = ?, revision = ?, tag = ?, size = ?, modified = ?,"
                 " clientmodified = ?, editor = ? WHERE id = ?",
                 {node->parent, node->name, node->revision, node->tag, node->size, node->modified, node->clientModified,
                  node->editor, node->id});
}

void touchFolder(Database &database, qint64 id, qint64 now)
{
    database.run("UPDATE nodes SET tag = ?, modified = ? WHERE id = ?", {newTag(), now, id});
}

void removeTree(Database &database, qint64 id)
{
    database.run("WITH RECURSIVE below(id) AS (SELECT ? UNION ALL"
                 " SELECT n.id FROM nodes n JOIN below ON n.parent = below.id)"
                 " INSERT OR IGNORE INTO removals SELECT content FROM revisions"
                 " WHERE content <> '' AND node IN (SELECT id FROM below)",
                 {id});
    database.run("DELETE FROM nodes WHERE id = ?", {id});
}

} // namespace documentserver
