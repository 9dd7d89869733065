#include "Reply.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace documentserver
{

Reply replyWith(const QJsonObject &object, int status)
{
    return {status, QJsonDocument(object).toJson(QJsonDocument::Compact)};
}

Reply replyFor(const ApiError &error, bool inArray)
{
    if (!inArray)
        return replyWith(errorReply(error), httpStatus(error));
    return {httpStatus(error), QJsonDocument(QJsonArray{errorReply(error)}).toJson(QJsonDocument::Compact)};
}

} // namespace documentserver
