#pragma once

#include "ContentFolder.h"
#include "DocumentServer/Database.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace documentserver
{

/// Bytes that uploads under way are going to need, by entry document. Any thread.
class Reservations
{
public:
    /// Gives the bytes back when it goes.
    class Hold
    {
    public:
        Hold(Reservations &all, qint64 root, qint64 bytes) : reservations(all), entry(root), amount(bytes) {}
        ~Hold() { reservations.add(entry, -amount); }
        Hold(const Hold &) = delete;
        Hold &operator=(const Hold &) = delete;

    private:
        Reservations &reservations;
        const qint64 entry;
        const qint64 amount;
    };

    /// Null where less than `bytes` of the `free` bytes are not reserved yet.
    std::unique_ptr<Hold> hold(qint64 root, qint64 bytes, qint64 free);
    qint64 held(qint64 root);

private:
    void add(qint64 root, qint64 bytes);

    std::mutex mutex;
    std::map<qint64, qint64> amounts;
};

/// The documents of all users: descriptions in documents.sqlite, contents in files. Any thread: one may change them
/// while others read what was there before.
class Documents
{
public:
    /// A storage for reading only, given back when it goes.
    class Reading
    {
    public:
        explicit Reading(Documents &all);
        ~Reading();
        Reading(const Reading &) = delete;
        Reading &operator=(const Reading &) = delete;
        Database &database() { return *connection; }

    private:
        Documents &documents;
        std::unique_ptr<Database> connection;
    };

    /// The only change in progress. What is not committed when it goes never happened.
    class Writing
    {
    public:
        explicit Writing(Documents &all);
        ~Writing();
        Writing(const Writing &) = delete;
        Writing &operator=(const Writing &) = delete;
        Database &database() { return documents.writer; }
        void commit();

    private:
        Documents &documents;
        std::unique_lock<std::mutex> lock;
        bool open = true;
    };

    /// Opens or makes documents.sqlite and content/ in the data folder. False with a text in *error.
    bool open(const QString &folder, QString *error);
    /// Removes the files of contents that nothing needs any more; after a change that may have left such.
    void sweep();

    ContentFolder contents;
    Reservations reservations;

private:
    std::unique_ptr<Database> openConnection(QString *error) const;

    QString path;
    Database writer;
    std::mutex writing;
    std::mutex mutex;
    std::vector<std::unique_ptr<Database>> idle;
};

} // namespace documentserver
