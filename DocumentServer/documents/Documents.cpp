#include "Documents.h"

#include "DocumentServer/ApiError.h"
#include "Revisions.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr size_t mostIdle = 8;

constexpr const char *layout = R"(
PRAGMA journal_mode = WAL;
PRAGMA synchronous = NORMAL;
PRAGMA foreign_keys = ON;
CREATE TABLE IF NOT EXISTS nodes(id INTEGER PRIMARY KEY AUTOINCREMENT,
    parent INTEGER REFERENCES nodes(id) ON DELETE CASCADE, home TEXT NOT NULL, name TEXT NOT NULL,
    type INTEGER NOT NULL, revision INTEGER NOT NULL, tag INTEGER NOT NULL, size INTEGER NOT NULL,
    modified INTEGER NOT NULL, clientmodified INTEGER NOT NULL, created INTEGER NOT NULL,
    creator TEXT NOT NULL, creatoraccount TEXT NOT NULL, editor TEXT NOT NULL);
CREATE UNIQUE INDEX IF NOT EXISTS nodes_by_name ON nodes(parent, name);
CREATE TABLE IF NOT EXISTS entries(root INTEGER PRIMARY KEY REFERENCES nodes(id), key TEXT UNIQUE NOT NULL,
    name TEXT NOT NULL, type INTEGER NOT NULL, owner TEXT NOT NULL, used INTEGER NOT NULL);
CREATE INDEX IF NOT EXISTS entries_of_owner ON entries(owner);
CREATE TABLE IF NOT EXISTS revisions(id INTEGER PRIMARY KEY AUTOINCREMENT,
    node INTEGER NOT NULL REFERENCES nodes(id) ON DELETE CASCADE, name TEXT NOT NULL, size INTEGER NOT NULL,
    modified INTEGER NOT NULL, clientmodified INTEGER NOT NULL, editor TEXT NOT NULL, content TEXT NOT NULL);
CREATE INDEX IF NOT EXISTS revisions_of_node ON revisions(node);
CREATE INDEX IF NOT EXISTS revisions_by_content ON revisions(content);
CREATE TABLE IF NOT EXISTS removals(content TEXT PRIMARY KEY) WITHOUT ROWID;
CREATE TABLE IF NOT EXISTS locks(node INTEGER PRIMARY KEY REFERENCES nodes(id) ON DELETE CASCADE,
    userid TEXT NOT NULL, account TEXT NOT NULL, name TEXT NOT NULL, life INTEGER NOT NULL, expires INTEGER NOT NULL,
    lockid TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS favorites(userid TEXT NOT NULL,
    node INTEGER NOT NULL REFERENCES nodes(id) ON DELETE CASCADE, PRIMARY KEY(userid, node)) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS favorites_of_node ON favorites(node);
CREATE TABLE IF NOT EXISTS settings(name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
)";
} // namespace

std::unique_ptr<Reservations::Hold> Reservations::hold(qint64 root, qint64 bytes, qint64 free)
{
    const std::lock_guard lock(mutex);
    qint64 &amount = amounts[root];
    if (bytes > 0 && bytes > free - amount)
        return nullptr;
    amount += std::max<qint64>(bytes, 0);
    return std::make_unique<Hold>(*this, root, std::max<qint64>(bytes, 0));
}

qint64 Reservations::held(qint64 root)
{
    const std::lock_guard lock(mutex);
    return amounts[root];
}

void Reservations::add(qint64 root, qint64 bytes)
{
    const std::lock_guard lock(mutex);
    amounts[root] += bytes;
}

Documents::Reading::Reading(Documents &all) : documents(all)
{
    {
        const std::lock_guard lock(documents.mutex);
        if (!documents.idle.empty()) {
            connection = std::move(documents.idle.back());
            documents.idle.pop_back();
            return;
        }
    }
    QString error;
    connection = documents.openConnection(&error);
    if (!connection)
        throw ApiError{InternalError, {}, error, {}};
}

Documents::Reading::~Reading()
{
    const std::lock_guard lock(documents.mutex);
    if (documents.idle.size() < mostIdle)
        documents.idle.push_back(std::move(connection));
}

Documents::Writing::Writing(Documents &all) : documents(all), lock(all.writing)
{
    documents.writer.run("BEGIN IMMEDIATE");
}

Documents::Writing::~Writing()
{
    if (!open)
        return;
    try {
        documents.writer.run("ROLLBACK");
    } catch (const ApiError &) {
        // SQLite has already rolled back what failed.
        open = false;
    }
}

void Documents::Writing::commit()
{
    documents.writer.run("COMMIT");
    open = false;
    lock.unlock();
}

std::unique_ptr<Database> Documents::openConnection(QString *error) const
{
    auto connection = std::make_unique<Database>();
    return connection->open(path, "PRAGMA foreign_keys = ON;", error) ? std::move(connection) : nullptr;
}

bool Documents::open(const QString &folder, QString *error)
{
    path = folder + "/documents.sqlite"_L1;
    try {
        const auto isInUse = [this](const QString &content) { return isContentInUse(writer, content); };
        if (!writer.open(path, layout, error) || !contents.open(folder + "/content"_L1, isInUse, error))
            return false;
        sweep();
        return true;
    } catch (const ApiError &problem) {
        *error = u"cannot use %1: %2"_s.arg(path, problem.cause);
        return false;
    }
}

void Documents::sweep()
{
    QStringList unneeded;
    {
        Reading reading(*this);
        if (contentsToRemove(reading.database()).isEmpty())
            return;
    }
    {
        Writing change(*this);
        keepContentsInUse(change.database());
        unneeded = contentsToRemove(change.database());
        change.commit();
    }
    if (unneeded.isEmpty())
        return;
    for (const QString &content : std::as_const(unneeded))
        contents.remove(content);
    Writing change(*this);
    for (const QString &content : std::as_const(unneeded))
        forgetRemoval(change.database(), content);
    change.commit();
}

} // namespace documentserver
