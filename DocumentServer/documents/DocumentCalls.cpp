#include "DocumentCalls.h"

#include "DocumentNames.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

void addDocumentCalls(CallTable *table, Services &services)
{
    addEntryCalls(table, services);
    addFolderCalls(table, services);
    addContentCalls(table, services);
    addUploadCall(table, services);
    addFileCalls(table, services);
    addPathCalls(table, services);
    addMoveCalls(table, services);
    addLockCalls(table, services);
    addPermissionCalls(table, services);
    addFavoriteCalls(table, services);
}

void requireRoomFor(qint64 growth, qint64 free)
{
    if (growth > 0 && growth > free)
        throw ApiError{QuotaExceeded, {}, {}, {}};
}

OnDuplicate onDuplicateIn(const QJsonObject &body, OnDuplicate usual)
{
    if (!body.contains("ondup"_L1))
        return usual;
    return static_cast<OnDuplicate>(requiredNumber(body, "ondup", 1, 3));
}

void refuseTakenName(const Node &holder)
{
    throw ApiError{NameTaken, {}, u"name taken by a %1"_s.arg(holder.isFile ? u"file"_s : u"folder"_s), {}};
}

void refuseParameter(const QString &what)
{
    throw ApiError{IllegalParameter, {}, u"parameter: %1"_s.arg(what), {}};
}

QString legalNameIn(const QJsonObject &body)
{
    const QJsonValue name = body.value("name"_L1);
    if (!name.isString())
        refuseParameter(u"name"_s);
    requireLegalName(name.toString());
    return name.toString();
}

} // namespace documentserver
