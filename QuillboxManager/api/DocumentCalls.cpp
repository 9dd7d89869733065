#include "api/DocumentCalls.h"

#include "api/QBApiManager.h"
#include "files/Descriptor.h"
#include "files/QBPathIndicator.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr int allEntryDocuments = 0;
constexpr qint64 listingLimit = 512 * 1024 * 1024; // bytes

QByteArray ofType(int docType)
{
    return QBApiManager::serializeCompact({{u"doctype"_s, docType}});
}

QByteArray ofDocument(const QString &docid)
{
    return QBApiManager::serializeCompact({{u"docid"_s, docid}});
}

QByteArray ofName(const QString &docid, const QString &name)
{
    return QBApiManager::serializeCompact({{u"docid"_s, docid}, {u"name"_s, name}});
}

/// The answer of a call that went well; a problem goes to `error` instead.
ServerReply unlessFailed(const ServerReply &answer, const QBError &problem, QBError *error)
{
    if (problem && error)
        *error = problem;
    return problem ? std::nullopt : answer;
}

} // namespace

ServerReply DocumentCalls::replyOrNothing(const DocumentCall &call, QBError *error)
{
    QBError problem;
    const ServerReply answer = request(call, &problem);
    return unlessFailed(answer, problem, error);
}

ServerReply DocumentCalls::listing(const DocumentCall &call, QBError *problem)
{
    const ServerReply answer = request(call, problem);
    if (*problem)
        reportToService(*problem);
    return answer;
}

ServerReply DocumentCalls::requestEntries(QBError *error)
{
    QBError problem;
    const ServerReply answer = listing({u"entrydoc2"_s, u"get"_s, ofType(allEntryDocuments)}, &problem);
    entryRequestFailed = !problem.isNull();
    if (problem && error)
        *error = problem;
    return answer;
}

ServerReply DocumentCalls::getInfoByDocType(int docType, QBError *error)
{
    QBError problem;
    const ServerReply answer = listing({u"entrydoc2"_s, u"get"_s, ofType(docType)}, &problem);
    return unlessFailed(answer, problem, error);
}

ServerReply DocumentCalls::getDocType(const QString &docid, QBError *error)
{
    return replyOrNothing({u"entrydoc2"_s, u"getdocinfo"_s, ofDocument(docid)}, error);
}

QString DocumentCalls::getDocTypePath(int docType)
{
    return QBPathIndicator::categoryNameWithType(docType);
}

ServerReply DocumentCalls::getPathByDocID(const QString &docid, QBError *error)
{
    return replyOrNothing({u"file"_s, u"convertpath"_s, ofDocument(docid)}, error);
}

QString DocumentCalls::convertDisplayPathByDocID(const QString &docid, QBError *error)
{
    const ServerReply converted = getPathByDocID(docid, error);
    const QString path = Descriptor::formatDocName(converted.value_or(QJsonObject()).value(u"namepath"_s).toString());
    if (path.isNull())
        return {};
    // The server may leave the entry document's type to a question of its own.
    const ServerReply typed = converted->contains(u"doctype"_s) ? converted : getDocType(docid, error);
    if (!typed)
        return {};
    const QString folder = getDocTypePath(static_cast<int>(Descriptor::docType(*typed)));
    return folder.isNull() ? path : folder + u'/' + path;
}

ServerReply DocumentCalls::getInfoByPath(const QString &namepath, QBError *error)
{
    return request({u"file"_s, u"getinfobypath"_s, QBApiManager::serializeCompact({{u"namepath"_s, namepath}})}, error);
}

ServerReply DocumentCalls::getInfoByPath1(const QString &namepath, QBError *error)
{
    QBError problem;
    const ServerReply answer = getInfoByPath(namepath, &problem);
    return unlessFailed(answer, problem, error);
}

ServerReply DocumentCalls::getFileAttribute(const QString &docid, QBError *error)
{
    return replyOrNothing({u"file"_s, u"attribute"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::getDirAttribute(const QString &docid, QBError *error)
{
    return replyOrNothing({u"dir"_s, u"attribute"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::getDirSize(const QString &docid, QBError *error)
{
    return replyOrNothing({u"dir"_s, u"size"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::getFileMetadata(const QString &docid, QBError *error)
{
    return replyOrNothing({u"file"_s, u"metadata"_s, ofDocument(docid)}, error);
}

ServerList DocumentCalls::getFileVersion(const QString &docid, QBError *error)
{
    return requestList({u"file"_s, u"revisions"_s, ofDocument(docid)}, ListErrors::InsteadOfList, error);
}

ServerReply DocumentCalls::getFileSuggestName(const QString &parentDocid, const QString &name, QBError *error)
{
    return replyOrNothing({u"file"_s, u"getsuggestname"_s, ofName(parentDocid, name)}, error);
}

ServerReply DocumentCalls::getDirSuggestName(const QString &parentDocid, const QString &name, QBError *error)
{
    return replyOrNothing({u"dir"_s, u"getsuggestname"_s, ofName(parentDocid, name)}, error);
}

ServerReply DocumentCalls::requestDirectoryListWithDocID(const QString &docid, bool needAttr, QBError *error)
{
    QBError problem;
    const QByteArray body = QBApiManager::serializeCompact({{u"docid"_s, docid}, {u"attr"_s, needAttr}});
    const ServerReply answer = listing({u"dir"_s, u"list"_s, body, listingLimit}, &problem);
    if (problem && error)
        *error = problem;
    return answer;
}
