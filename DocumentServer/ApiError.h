#pragma once

#include "ErrorCodes.h"

#include <QJsonObject>
#include <QString>

namespace documentserver
{

/// Thrown by a call to refuse it; becomes the error reply.
struct ApiError {
    int code = InternalError;
    QString message; ///< "errmsg"; empty: the code's standard text
    QString cause;   ///< "causemsg"
    QJsonObject detail;
    int httpStatus = 0; ///< 0: derived from the code
};

/// The HTTP status that goes with an error.
int httpStatus(const ApiError &error);
/// {"errcode", "errmsg", "causemsg"} and "detail" when there is one.
QJsonObject errorReply(const ApiError &error);

} // namespace documentserver
