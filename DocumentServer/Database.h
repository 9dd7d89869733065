#pragma once

#include <QString>
#include <QVariantList>

#include <functional>
#include <map>
#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

namespace documentserver
{

/// An SQLite file. Every statement is complete on disk, or undone, whatever happens
/// to the process. Any thread; statements run one at a time. Failures throw ApiError (InternalError).
class Database
{
public:
    Database() = default;
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    /// Opens or makes the file and runs the statements of `layout`, which make what is missing.
    bool open(const QString &path, const char *layout, QString *error);
    void close();

    /// Runs one statement with its "?" filled in and returns the rows. Values: qint64, QString and QByteArray.
    QList<QVariantList> run(const char *statement, const QVariantList &values = {});

    /// The same, a row at a time. The taker must not throw, nor use this database.
    void each(const char *statement, const QVariantList &values,
              const std::function<void(const QVariantList &)> &taker);
    /// The id that the last INSERT gave; ask while holding exclusive().
    qint64 lastId();

    /// Holds other threads off for several statements that belong together.
    std::unique_lock<std::recursive_mutex> exclusive() { return std::unique_lock(mutex); }

private:
    sqlite3_stmt *prepared(const char *statement);

    std::recursive_mutex mutex;
    sqlite3 *handle = nullptr;
    std::map<std::string, sqlite3_stmt *> statements;
};

} // namespace documentserver
