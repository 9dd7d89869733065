#pragma once

#include <QString>
#include <QVariantList>

#include <map>
#include <mutex>

struct sqlite3;
struct sqlite3_stmt;

namespace documentserver
{

/// The file that keeps sessions, attempts and flags. Every statement is complete on disk, or undone, whatever happens
/// to the process. Any thread; statements run one at a time. Failures throw ApiError (InternalError).
class Database
{
public:
    Database() = default;
    ~Database();
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    bool open(const QString &path, QString *error);
    void close();

    /// Runs one statement with its "?" filled in and returns the rows. Values: qint64, QString and QByteArray.
    QList<QVariantList> run(const char *statement, const QVariantList &values = {});

    /// Holds other threads off for several statements that belong together.
    std::unique_lock<std::recursive_mutex> exclusive() { return std::unique_lock(mutex); }

private:
    sqlite3_stmt *prepared(const char *statement);

    std::recursive_mutex mutex;
    sqlite3 *handle = nullptr;
    std::map<std::string, sqlite3_stmt *> statements;
};

} // namespace documentserver
