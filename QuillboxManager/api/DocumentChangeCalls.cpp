#include "api/DocumentCalls.h"

#include "api/QBApiManager.h"

using namespace Qt::StringLiterals;

// The calls of DocumentCalls that change a document, its place or its lock.

namespace
{

constexpr int refuseTakenName = 1; // "ondup"
constexpr int takeFreeName = 2;
constexpr int withoutTimeLimit = -1; // "expiretime"

QByteArray body(const QJsonObject &parameters)
{
    return QBApiManager::serializeCompact(parameters);
}

QByteArray ofDocument(const QString &docid)
{
    return body({{u"docid"_s, docid}});
}

QByteArray ofRenaming(const QString &docid, const QString &newName)
{
    return body({{u"docid"_s, docid}, {u"name"_s, newName}, {u"ondup"_s, takeFreeName}});
}

QByteArray ofMoving(const QString &docid, const QString &destParentDocid)
{
    return body({{u"docid"_s, docid}, {u"destparent"_s, destParentDocid}});
}

} // namespace

ServerReply DocumentCalls::restorFileVersion(const QString &docid, const QString &rev, QBError *error)
{
    return request({u"file"_s, u"restorerevision"_s, body({{u"docid"_s, docid}, {u"rev"_s, rev}})}, error);
}

ServerReply DocumentCalls::requestCreateDirWithParentDocID(const QString &parentDocid, const QString &name,
                                                           QBError *error)
{
    return requestCreateDirWithParentDocID(parentDocid, name, refuseTakenName, error);
}

ServerReply DocumentCalls::requestCreateDirWithParentDocID(const QString &parentDocid, const QString &name, int ondup,
                                                           QBError *error)
{
    const QJsonObject parameters{{u"docid"_s, parentDocid}, {u"name"_s, name}, {u"ondup"_s, ondup}};
    return request({u"dir"_s, u"create"_s, body(parameters)}, error);
}

ServerReply DocumentCalls::requestRemoveFileWithDocID(const QString &docid, QBError *error)
{
    return request({u"file"_s, u"delete"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::requestRemoveDirWithDocID(const QString &docid, QBError *error)
{
    return request({u"dir"_s, u"delete"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::requestRenameFileWithDocID(const QString &docid, const QString &newName, QBError *error)
{
    return request({u"file"_s, u"rename"_s, ofRenaming(docid, newName)}, error);
}

ServerReply DocumentCalls::requestRenameDirWithDocID(const QString &docid, const QString &newName, QBError *error)
{
    return request({u"dir"_s, u"rename"_s, ofRenaming(docid, newName)}, error);
}

ServerReply DocumentCalls::moveFileWithDocID(const QString &docid, const QString &destParentDocid, QBError *error)
{
    return request({u"file"_s, u"move"_s, ofMoving(docid, destParentDocid)}, error);
}

ServerReply DocumentCalls::moveDirWithDocID(const QString &docid, const QString &destParentDocid, QBError *error)
{
    return request({u"dir"_s, u"move"_s, ofMoving(docid, destParentDocid)}, error);
}

ServerReply DocumentCalls::requestLockFileWithDocID(const QString &docid, bool force, QBError *error)
{
    const QJsonObject parameters{{u"docid"_s, docid}, {u"force"_s, force}, {u"expiretime"_s, withoutTimeLimit}};
    return request({u"autolock"_s, u"trylock"_s, body(parameters)}, error);
}

ServerReply DocumentCalls::requestUnLockFileWithDocID(const QString &docid, QBError *error)
{
    return request({u"autolock"_s, u"unlock"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::requestRefreshLockFile(const QJsonArray &lockinfos, QBError *error)
{
    return request({u"autolock"_s, u"refresh"_s, body({{u"lockinfos"_s, lockinfos}})}, error);
}
