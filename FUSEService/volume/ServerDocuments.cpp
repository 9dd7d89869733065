#include "volume/ServerDocuments.h"

#include "volume/Errno.h"
#include "volume/ErrnoMap.h"
#include "volume/Records.h"

#include "files/Descriptor.h"
#include "platform/Log.h"
#include "state/QBGlobeInformation.h"

#include <QJsonArray>

#include <cerrno>

using namespace Qt::StringLiterals;

namespace volume
{
namespace
{

constexpr qint64 tokenRefused = 401001;

bool concernsToken(const QBError &error)
{
    return error.domain() == QBError::serverDomain() && error.code() == tokenRefused;
}

ClientServices servicesWith(std::chrono::milliseconds callTimeout)
{
    ClientServices services;
    services.isServiceRunning = [] { return false; }; // this is the service
    services.callTimeout = callTimeout;
    return services;
}

void appendRecords(QList<Document> &documents, const QJsonArray &records, Document::Kind kind)
{
    documents.reserve(documents.size() + records.size());
    for (const QJsonValue &record : records)
        if (const auto document = documentFromRecord(record.toObject(), kind))
            documents.append(*document);
}

Document changedDocument(const QJsonObject &record, Document::Kind kind)
{
    const auto document = documentFromRecord(record, kind);
    if (!document)
        throw Errno{EIO};
    return *document;
}

qint64 integer(const QJsonValue &value)
{
    return value.toVariant().toLongLong();
}

} // namespace

ServerDocuments::ServerDocuments(QBGlobeInformation &globe, platform::UserDefaults &defaults,
                                 std::chrono::milliseconds callTimeout)
    : session(globe), networking(globe, transport, defaults, servicesWith(callTimeout)), transfer(networking, &stop)
{
}

void ServerDocuments::shutDown()
{
    stop.stop();
    transport.shutDown();
}

template <typename Call> auto ServerDocuments::ask(const char *what, Call call)
{
    if (isHanging())
        throw Errno{EIO};
    const auto began = std::chrono::steady_clock::now();
    const QString token = session.account().tokenID;
    QBError error;
    auto reply = call(&error);
    noteOutcome(error, began);
    if (concernsToken(error) && renewSession(token)) {
        error = QBError();
        reply = call(&error);
    }
    if (!error && reply)
        return *reply;
    const int number = error ? errnoForError(error) : EIO;
    platform::log(u"FUSEService: %1 failed: %2 %3 (%4)"_s.arg(
        QLatin1String(what), error.domain(), QString::number(error.code()), error.localizedDescription()));
    throw Errno{number};
}

bool ServerDocuments::isHanging()
{
    const std::lock_guard lock(health);
    return std::chrono::steady_clock::now() < hangingUntil;
}

void ServerDocuments::noteOutcome(const QBError &error, std::chrono::steady_clock::time_point began)
{
    constexpr auto pause = std::chrono::seconds(5);
    const bool timedOut =
        error.domain() == QBError::transportDomain() && error.code() == static_cast<int>(TransportError::TimedOut);
    const auto now = std::chrono::steady_clock::now();
    const std::lock_guard lock(health);
    if (!timedOut)
        lastAnswer = now;
    else if (lastAnswer < began)
        hangingUntil = now + pause;
}

bool ServerDocuments::renewSession(const QString &refusedToken)
{
    constexpr auto patience = std::chrono::seconds(5);
    const std::lock_guard lock(renewal);
    session.refresh(); // the manager may have signed in again
    if (session.account().tokenID != refusedToken)
        return true;
    const auto now = std::chrono::steady_clock::now();
    if (refusedToken == hopelessToken && now - hopelessSince < patience)
        return false;
    if (networking.refreshToken())
        return true;
    hopelessToken = refusedToken;
    hopelessSince = now;
    platform::log(u"FUSEService: the session has ended; files can be used again after the next sign-in"_s);
    return false;
}

QList<Document> ServerDocuments::entries()
{
    const QJsonObject reply =
        ask("listing the entry documents", [&](QBError *error) { return networking.requestEntries(error); });
    QList<Document> found;
    for (const QJsonValue &record : reply.value(u"docinfos"_s).toArray())
        if (const auto entry = entryFromRecord(record.toObject()))
            found.append(*entry);
    return found;
}

QList<Document> ServerDocuments::list(const QString &folderId)
{
    const QJsonObject reply = ask("listing a folder", [&](QBError *error) {
        return networking.requestDirectoryListWithDocID(folderId, true, error);
    });
    QList<Document> documents;
    appendRecords(documents, reply.value(u"dirs"_s).toArray(), Document::Kind::Folder);
    appendRecords(documents, reply.value(u"files"_s).toArray(), Document::Kind::File);
    return documents;
}

void ServerDocuments::read(const Document &document, qint64 offset, qint64 length, ByteSink &into)
{
    ask("reading a file", [&](QBError *error) {
        return transfer.readRange(document.id, offset, length, into, error, document.rev);
    });
}

Document ServerDocuments::createFile(const QString &folderId, const QString &name, ByteSource &contents,
                                     qint64 modified)
{
    const QJsonObject record = ask("creating a file", [&](QBError *error) {
        return transfer.createFile(folderId, name, contents, error, DocumentTransfer::Overwrite, modified);
    });
    return changedDocument(record, Document::Kind::File);
}

Document ServerDocuments::replaceContents(const QString &id, ByteSource &contents, qint64 modified)
{
    const QJsonObject record =
        ask("saving a file", [&](QBError *error) { return transfer.uploadFile(id, contents, error, modified); });
    return changedDocument(record, Document::Kind::File);
}

Document ServerDocuments::createFolder(const QString &folderId, const QString &name)
{
    const QJsonObject record = ask("creating a folder", [&](QBError *error) {
        return networking.requestCreateDirWithParentDocID(folderId, name, error);
    });
    return changedDocument(record, Document::Kind::Folder);
}

void ServerDocuments::remove(const Document &document)
{
    ask("removing a document", [&](QBError *error) {
        return document.isFile() ? networking.requestRemoveFileWithDocID(document.id, error)
                                 : networking.requestRemoveDirWithDocID(document.id, error);
    });
}

void ServerDocuments::rename(const Document &document, const QString &name)
{
    const auto call = [&](const QString &wanted) {
        return ask("renaming a document", [&](QBError *error) {
            return document.isFile() ? networking.requestRenameFileWithDocID(document.id, wanted, error)
                                     : networking.requestRenameDirWithDocID(document.id, wanted, error);
        });
    };
    const QString became = call(name).value(u"name"_s).toString(name);
    if (became == name)
        return;
    // The name was taken, so the server chose another one.
    call(document.name);
    throw Errno{EEXIST};
}

QString ServerDocuments::move(const Document &document, const QString &folderId)
{
    const QJsonObject reply = ask("moving a document", [&](QBError *error) {
        return document.isFile() ? networking.moveFileWithDocID(document.id, folderId, error)
                                 : networking.moveDirWithDocID(document.id, folderId, error);
    });
    return reply.value(u"docid"_s).toString(document.id);
}

QString ServerDocuments::pathOf(const QString &id)
{
    const QJsonObject reply =
        ask("finding a document", [&](QBError *error) { return networking.getPathByDocID(id, error); });
    return Descriptor::formatDocName(reply.value(u"namepath"_s).toString());
}

QString ServerDocuments::internalLinkPrefix()
{
    ask("reading the server's settings", [&](QBError *) { return networking.getServerConfig(); });
    return networking.internalLinkPrefix();
}

QSet<QString> ServerDocuments::favoritesAmong(const QList<Document> &found)
{
    constexpr qsizetype idsPerCall = 200;
    QSet<QString> favorites;
    for (qsizetype first = 0; first < found.size(); first += idsPerCall) {
        QJsonArray ids;
        for (const Document &document : found.mid(first, idsPerCall))
            ids.append(document.id);
        const QJsonArray answers =
            ask("reading the favourites", [&](QBError *error) { return networking.checkFileFavorite(ids, error); });
        for (const QJsonValue answer : answers)
            if (answer.toObject().value(u"favorited").toBool())
                favorites.insert(answer.toObject().value(u"docid").toString());
    }
    return favorites;
}

void ServerDocuments::lock(const QString &id)
{
    ask("locking a file", [&](QBError *error) { return networking.requestLockFileWithDocID(id, false, error); });
}

void ServerDocuments::unlock(const QString &id)
{
    ask("unlocking a file", [&](QBError *error) { return networking.requestUnLockFileWithDocID(id, error); });
}

Space ServerDocuments::space()
{
    const QJsonObject reply = ask("asking for the quota", [&](QBError *error) {
        const ServerReply quota = networking.requestQuota();
        if (!quota)
            *error = transportError(TransportError::BadReply);
        return quota;
    });
    Space space;
    for (const QJsonValue &quota : reply.value(u"quotainfos"_s).toArray()) {
        space.total += integer(quota.toObject().value(u"quota"_s));
        space.used += integer(quota.toObject().value(u"used"_s));
    }
    return space;
}

} // namespace volume
