#pragma once

#include "volume/DocumentStore.h"
#include "volume/Errno.h"

#include "api/ByteSink.h"
#include "api/ByteSource.h"

#include <QHash>
#include <QStringList>

#include <cerrno>
#include <map>
#include <mutex>

namespace testing
{

/// The number that the work throws, 0 when it throws none.
template <typename Work> int errnoOf(Work work)
{
    try {
        work();
        return 0;
    } catch (const volume::Errno &failure) {
        return failure.code;
    }
}

inline volume::Document file(const QString &name, const QString &rev = QStringLiteral("1"), qint64 size = 0)
{
    return {.id = QStringLiteral("qb://1/") + name, .name = name, .rev = rev, .size = size};
}

inline volume::Document folder(const QString &id)
{
    return {.kind = volume::Document::Kind::Folder, .id = id};
}

inline volume::Document entry(const QString &name, int category, const QString &id = QStringLiteral("qb://9"))
{
    return {.kind = volume::Document::Kind::Entry, .id = id, .name = name, .category = category};
}

/// Documents in memory, with the server's rules as far as the volume relies on them. Any thread.
class MemoryDocuments : public volume::DocumentStore
{
public:
    struct Item {
        volume::Document document;
        QString folder;
        QByteArray contents;
        bool locked = false;
    };

    QList<volume::Document> entries() override
    {
        const auto guard = called(QStringLiteral("entries"));
        return {entry(QStringLiteral("Ann"), 1, QStringLiteral("qb://1"))};
    }
    QList<volume::Document> list(const QString &folderId) override
    {
        const auto guard = called(QStringLiteral("list"));
        QList<volume::Document> found;
        for (const auto &[id, item] : items)
            if (item.folder == folderId)
                found.append(item.document);
        return found;
    }
    void read(const volume::Document &document, qint64 offset, qint64 length, ByteSink &into) override
    {
        const auto guard = called(QStringLiteral("read"));
        const QByteArray part = revisions.value(document.id + document.rev).mid(offset, length);
        into.write(part.constData(), part.size());
    }
    volume::Document createFile(const QString &folderId, const QString &name, ByteSource &contents,
                                qint64 modified) override
    {
        const auto guard = called(QStringLiteral("create ") + name);
        if (Item *const existing = named(folderId, name))
            return store(*existing, contents, modified);
        return store(add(folderId, name, volume::Document::Kind::File), contents, modified);
    }
    volume::Document replaceContents(const QString &id, ByteSource &contents, qint64 modified) override
    {
        const auto guard = called(QStringLiteral("replace"));
        return store(item(id), contents, modified);
    }
    volume::Document createFolder(const QString &folderId, const QString &name) override
    {
        const auto guard = called(QStringLiteral("folder ") + name);
        if (named(folderId, name))
            throw volume::Errno{EEXIST};
        return add(folderId, name, volume::Document::Kind::Folder).document;
    }
    void remove(const volume::Document &document) override
    {
        const auto guard = called(QStringLiteral("remove ") + document.name);
        item(document.id);
        items.erase(document.id);
    }
    void rename(const volume::Document &document, const QString &name) override
    {
        const auto guard = called(QStringLiteral("rename ") + name);
        Item &renamed = item(document.id);
        if (named(renamed.folder, name))
            throw volume::Errno{EEXIST};
        renamed.document.name = name;
    }
    QString move(const volume::Document &document, const QString &folderId) override
    {
        const auto guard = called(QStringLiteral("move"));
        Item &moved = item(document.id);
        if (named(folderId, moved.document.name))
            throw volume::Errno{EEXIST};
        moved.folder = folderId;
        return document.id;
    }
    void lock(const QString &id) override { setLocked(QStringLiteral("lock"), id, true); }
    void unlock(const QString &id) override { setLocked(QStringLiteral("unlock"), id, false); }
    volume::Space space() override { return {1 << 20, 1 << 10}; }

    // For the tests.
    void failWith(const QString &call, int number)
    {
        const std::lock_guard lock(mutex);
        failures.insert(call, number);
    }
    void succeed()
    {
        const std::lock_guard lock(mutex);
        failures.clear();
    }
    /// Calls since the last question, without reads and listings.
    QStringList takeChanges()
    {
        const std::lock_guard lock(mutex);
        return std::exchange(changes, {});
    }
    int count(const QString &call)
    {
        const std::lock_guard lock(mutex);
        return counts.value(call);
    }
    /// Name → contents of a folder's files.
    QHash<QString, QByteArray> files(const QString &folderId)
    {
        const std::lock_guard lock(mutex);
        QHash<QString, QByteArray> found;
        for (const auto &[id, item] : items)
            if (item.folder == folderId && item.document.isFile())
                found.insert(item.document.name, item.contents);
        return found;
    }
    QString idOf(const QString &folderId, const QString &name)
    {
        const std::lock_guard lock(mutex);
        const Item *const found = named(folderId, name);
        return found ? found->document.id : QString();
    }
    bool anyLocked()
    {
        const std::lock_guard lock(mutex);
        for (const auto &[id, item] : items)
            if (item.locked)
                return true;
        return false;
    }

private:
    /// Of one call from now on; throws when it is to fail.
    std::unique_lock<std::mutex> called(const QString &call)
    {
        std::unique_lock guard(mutex);
        const QString kind = call.section(u' ', 0, 0);
        ++counts[kind];
        if (const int number = failures.value(kind); number != 0)
            throw volume::Errno{number};
        if (kind != QLatin1String("read") && kind != QLatin1String("list") && kind != QLatin1String("entries"))
            changes.append(call);
        return guard;
    }
    void setLocked(const QString &call, const QString &id, bool locked)
    {
        const auto guard = called(call);
        item(id).locked = locked;
    }
    Item &item(const QString &id)
    {
        const auto found = items.find(id);
        if (found == items.end())
            throw volume::Errno{ENOENT};
        return found->second;
    }
    Item *named(const QString &folderId, const QString &name)
    {
        for (auto &[id, item] : items)
            if (item.folder == folderId && item.document.name == name)
                return &item;
        return nullptr;
    }
    Item &add(const QString &folderId, const QString &name, volume::Document::Kind kind)
    {
        const QString id = folderId + QStringLiteral("/%1").arg(++lastNumber);
        Item &made = items[id];
        made.document.id = id;
        made.document.kind = kind;
        made.document.name = name;
        made.folder = folderId;
        return made;
    }
    volume::Document store(Item &item, ByteSource &contents, qint64 modified)
    {
        QByteArray bytes(contents.size(), '\0');
        qint64 done = 0;
        while (done < bytes.size())
            done += contents.readAt(done, bytes.data() + done, bytes.size() - done);
        item.contents = bytes;
        item.document.rev = QString::number(++lastNumber);
        item.document.size = bytes.size();
        item.document.modified = modified;
        revisions.insert(item.document.id + item.document.rev, bytes);
        return item.document;
    }

    std::mutex mutex; ///< guards what follows
    std::map<QString, Item> items;
    QHash<QString, QByteArray> revisions; ///< by document and revision
    QHash<QString, int> failures;
    QHash<QString, int> counts;
    QStringList changes;
    int lastNumber = 0;
};

} // namespace testing
