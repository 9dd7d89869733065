#include "DemoDocuments.h"

#include "DocumentNames.h"
#include "Place.h"
#include "Revisions.h"

#include <QDateTime>
#include <QDir>
#include <QFile>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 partSize = 256 * 1024;
constexpr const char *doneMark = "demo_documents";

class Import
{
public:
    Import(Services &all, Account account)
        : services(all), owner(std::move(account)), now(microseconds(all)), change(all.documents)
    {
    }

    bool isDone()
    {
        return !change.database().run("SELECT 1 FROM settings WHERE name = ?", {QLatin1String(doneMark)}).isEmpty();
    }

    void run(const QString &folder)
    {
        ensureCommonEntries(change.database(), now);
        ensureOwnEntry(change.database(), owner, now);
        for (const Entry &candidate : entriesOf(change.database(), owner.userid()))
            entry = candidate.owner.isEmpty() ? entry : candidate;
        addInside(folder, entry.root, 1);
        changeUsed(change.database(), entry.root, bytes);
        change.database().run("INSERT INTO settings(name, value) VALUES(?, 1)", {QLatin1String(doneMark)});
        services.documents.contents.flush();
        change.commit();
        for (const auto &content : contents) {
            content->keep();
            services.documents.contents.settle(content->content());
        }
    }

private:
    void addInside(const QString &folder, qint64 parent, int level);
    Node newNode(const QFileInfo &info, qint64 parent) const;
    void addFile(const QFileInfo &info, Node node);
    std::unique_ptr<ContentWriter> copyOf(const QString &path);

    Services &services;
    const Account owner;
    const qint64 now;
    Documents::Writing change;
    Entry entry;
    qint64 bytes = 0;
    std::vector<std::unique_ptr<ContentWriter>> contents;
};

/// Whether it can stand in the tree: a plain file or folder with a name that clients may give.
bool isWelcome(const QFileInfo &info, int level)
{
    try {
        requireLegalName(info.fileName());
    } catch (const ApiError &) {
        return false;
    }
    return !info.isSymLink() && (info.isFile() || (info.isDir() && level < deepestLevel));
}

void Import::addInside(const QString &folder, qint64 parent, int level)
{
    const QFileInfoList infos = QDir(folder).entryInfoList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    for (const QFileInfo &info : infos) {
        if (!isWelcome(info, level)) {
            std::fprintf(stderr, "left out: %s\n", qPrintable(info.filePath()));
            continue;
        }
        Node node = newNode(info, parent);
        if (info.isDir()) {
            insertNode(change.database(), &node);
            addInside(info.filePath(), node.id, level + 1);
        } else {
            addFile(info, node);
        }
    }
}

Node Import::newNode(const QFileInfo &info, qint64 parent) const
{
    Node node;
    node.parent = parent;
    node.home = entry.key;
    node.name = info.fileName();
    node.modified = node.created = now;
    node.clientModified = info.lastModified().toMSecsSinceEpoch() * 1000;
    node.creator = node.editor = displayNameOf(owner);
    node.creatorAccount = owner.name();
    return node;
}

void Import::addFile(const QFileInfo &info, Node node)
{
    auto content = copyOf(info.filePath());
    node.isFile = true;
    node.size = content->size();
    insertNode(change.database(), &node);
    Revision revision{
        0, node.name, node.size, now, node.clientModified, node.editor, node.size > 0 ? content->content() : u""_s};
    addRevision(change.database(), &node, &revision, 1);
    bytes += node.size;
    if (node.size > 0)
        contents.push_back(std::move(content));
}

std::unique_ptr<ContentWriter> Import::copyOf(const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        throw ApiError{InternalError, {}, u"cannot read %1: %2"_s.arg(path, file.errorString()), {}};
    auto content = services.documents.contents.write();
    QByteArray part;
    while (!(part = file.read(partSize)).isEmpty())
        content->write(part.constData(), part.size());
    if (file.error() != QFile::NoError)
        throw ApiError{InternalError, {}, u"cannot read %1: %2"_s.arg(path, file.errorString()), {}};
    content->finish(ContentWriter::Flush::Later);
    return content;
}
} // namespace

bool importDemoDocuments(Services &services, const QString &folder, QString *error)
{
    if (folder.isEmpty())
        return true;
    const auto account = services.accounts.find(demoAccount().value("account"_L1).toString());
    if (!account || !QFileInfo(folder).isDir()) {
        *error = account ? u"%1 is not a folder"_s.arg(folder) : u"there is no demo account"_s;
        return false;
    }
    try {
        Import import(services, *account);
        if (!import.isDone())
            import.run(folder);
        return true;
    } catch (const ApiError &problem) {
        *error = problem.cause;
        return false;
    }
}

} // namespace documentserver
