#include "login/ServerVersionOutcome.h"

namespace ServerVersionOutcome
{

namespace
{
constexpr qint64 IllegalParameterCode = 400002;
constexpr qint64 NoUpdatePackageCode = 400003; // a server without packages has nothing against this version
} // namespace

Kind of(const QBError &error, const ServerReply &reply)
{
    if (error && error.code() == IllegalParameterCode)
        return Kind::IllegalParameter;
    if (error) // whatever came with it is no answer
        return error.code() == NoUpdatePackageCode ? Kind::Finish : Kind::ShowError;
    const QJsonValue result = reply ? reply->value(QStringLiteral("result")) : QJsonValue();
    const bool absent = result.isUndefined() || result.isNull();
    return absent || result.toString() == QLatin1String("ok") ? Kind::Finish : Kind::AskForUpdate;
}

} // namespace ServerVersionOutcome
