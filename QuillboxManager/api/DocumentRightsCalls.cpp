#include "api/DocumentCalls.h"

#include "api/QBApiManager.h"

using namespace Qt::StringLiterals;

// The calls of DocumentCalls about locks held, permissions, owners and favourites.

namespace
{

constexpr int checkedPermission = 2; // "perm"

QByteArray ofDocument(const QString &docid)
{
    return QBApiManager::serializeCompact({{u"docid"_s, docid}});
}

} // namespace

ServerReply DocumentCalls::getFileLockInfo(const QString &docid, QBError *error)
{
    return replyOrNothing({u"autolock"_s, u"getlockinfo"_s, ofDocument(docid)}, error);
}

ServerList DocumentCalls::requestGetDirLockInfoWithDocID(const QString &docid, QBError *error)
{
    return requestList({u"autolock"_s, u"getdirlockinfo"_s, ofDocument(docid)}, ListErrors::InsteadOfList, error);
}

ServerReply DocumentCalls::getFilePermission(const QString &docid, QBError *error)
{
    return replyOrNothing({u"perm1"_s, u"list"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::getFilePermission2(const QString &docid, QBError *error)
{
    return replyOrNothing({u"perm2"_s, u"get"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::getCurrentUserPermission(const QString &docid, QBError *error)
{
    const QJsonObject parameters{{u"docid"_s, docid}, {u"userid"_s, currentUserID()}};
    return replyOrNothing({u"perm1"_s, u"checkall"_s, QBApiManager::serializeCompact(parameters)}, error);
}

ServerReply DocumentCalls::getFileCheck(const QString &docid)
{
    const QJsonObject parameters{{u"docid"_s, docid}, {u"perm"_s, checkedPermission}};
    return request({u"perm1"_s, u"check"_s, QBApiManager::serialize(parameters)}, nullptr);
}

ServerReply DocumentCalls::getMAXAllowPerm(QBError *error)
{
    const ServerReply answer = replyOrNothing({u"perm1"_s, u"getinternallinktemplate"_s, {}}, error);
    const QJsonValue bits = answer.value_or(QJsonObject()).value(u"allowperm"_s);
    if (bits.isDouble())
        allowedPermissions = bits.toInteger();
    return answer;
}

ServerReply DocumentCalls::getFileOwnerInfo(const QString &docid, QBError *error)
{
    return replyOrNothing({u"owner"_s, u"get"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::getIsFileOwner(const QString &docid, QBError *error)
{
    return replyOrNothing({u"owner"_s, u"check"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::addFavoriteFile(const QString &docid, QBError *error)
{
    return request({u"favorites"_s, u"add"_s, ofDocument(docid)}, error);
}

ServerReply DocumentCalls::deleteFavoriteFile(const QString &docid, QBError *error)
{
    return request({u"favorites"_s, u"delete"_s, ofDocument(docid)}, error);
}

ServerList DocumentCalls::checkFileFavorite(const QJsonArray &docids, QBError *error)
{
    const QByteArray body = QBApiManager::serializeCompact({{u"docids"_s, docids}});
    return requestList({u"favorites"_s, u"check"_s, body}, ListErrors::InFirstElement, error);
}
