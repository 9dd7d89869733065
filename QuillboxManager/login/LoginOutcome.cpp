#include "login/LoginOutcome.h"

#include "login/JsonValues.h"

namespace LoginOutcome
{

Kind ofCodeRequest(const QBError &error)
{
    if (error.isNull())
        return Kind::Success;
    switch (error.code()) {
    case ServerHasNoCodeWay:
        return Kind::InformationAlert;
    case NoBoundAddress:
    case AddressUnknown:
    case AddressUnusable:
        return Kind::CautionAlert;
    default:
        return Kind::ShowError;
    }
}

Kind ofLogin(const QBError &error)
{
    return error.code() == SecondFactorRequired ? Kind::SecondFactor : ofCodeRequest(error);
}

QString alertKey(Kind kind)
{
    switch (kind) {
    case Kind::InformationAlert:
        return QStringLiteral("401058");
    case Kind::CautionAlert:
        return QStringLiteral("403058");
    default:
        return {};
    }
}

bool demandsPictureCode(const ServerReply &reply)
{
    return reply &&
           JsonValues::boolean(JsonValues::object(*reply, QStringLiteral("detail")), QStringLiteral("isShowStatus"));
}

} // namespace LoginOutcome
