#include "api/QBApiManager.h"
#include "api/QBNetworking.h"
#include "api/ServerReplies.h"

#include "state/QBGlobeInformation.h"

using namespace Qt::StringLiterals;

namespace
{

constexpr int macDownload = 3; // "osType" of the installer wanted

} // namespace

ServerReply QBNetworking::getServerConfig()
{
    const ServerReply reply = callOrNothing(spliceURLWithoutToken(u"auth1"_s, u"getconfig"_s), {});
    if (!reply)
        return {};
    const QJsonValue redirect =
        reply->value(u"thirdauth"_s).toObject().value(u"config"_s).toObject().value(u"autoCasRedirect"_s);
    const std::lock_guard lock(mutex);
    linkPrefix = ServerReplies::text(reply->value(u"internal_link_prefix"_s));
    if (!redirect.isUndefined())
        casRedirect = ServerReplies::truth(redirect);
    return reply;
}

ServerReply QBNetworking::getOEMConfigBySection(QBError *error)
{
    return call(spliceURL(u"config"_s, u"getoemconfigbysection"_s),
                QBApiManager::serialize({{u"section"_s, u"quillbox"_s}}), error);
}

ServerReply QBNetworking::getDocShareConfig(QBError *error)
{
    return call(spliceURL(u"perm1"_s, u"getsharedocconfig"_s), {}, error);
}

ServerReply QBNetworking::getHostInfo()
{
    const QJsonObject config = getServerConfig().value_or(QJsonObject());
    const bool https = ServerReplies::truth(config.value(u"https"_s));
    QJsonObject body{{u"https"_s, https ? 1 : 0}};
    const QJsonValue port = config.value(https ? u"https_port"_s : u"port"_s);
    if (!port.isUndefined())
        body.insert(u"port"_s, port);
    return callOrNothing(spliceURL(u"redirect"_s, u"gethostinfo"_s), QBApiManager::serialize(body));
}

ServerReply QBNetworking::agreedToTermsOfUse(QBError *error)
{
    return call(spliceURL(u"user"_s, u"agreedtotermsofuse"_s), {}, error);
}

ServerReply QBNetworking::getAgreedToTermsOfUseState(QBError *error)
{
    return call(spliceURL(u"user"_s, u"get"_s), {}, error);
}

ServerReply QBNetworking::requestUserInfo()
{
    QBError error;
    const ServerReply reply = call(spliceURL(u"user"_s, u"get"_s), {}, &error);
    if (!error)
        return reply;
    reportToService(error);
    return {};
}

ServerReply QBNetworking::requestQuota()
{
    return isLogin() ? callOrNothing(spliceURL(u"entrydoc2"_s, u"getuserquota"_s), {}) : std::nullopt;
}

ServerReply QBNetworking::getConfig(QBError *error)
{
    return call(spliceURL(u"config"_s, u"get"_s), QBApiManager::serialize({{u"ostype"_s, u"5"_s}}), error);
}

void QBNetworking::setquickstartstatus(QBError *error)
{
    call(spliceURL(u"config"_s, u"setquickstartstatus"_s), QBApiManager::serialize({{u"ostype"_s, u"5"_s}}), error);
}

ServerReply QBNetworking::requestCheckClientVersion(QBError *error)
{
    const QJsonObject body{{u"platform"_s, u"mac"_s}, {u"version"_s, services.version}};
    return call(spliceURLWithoutToken(u"update"_s, u"check"_s), QBApiManager::serialize(body), error);
}

ServerReply QBNetworking::requestDownloadUrl(QBError *error)
{
    const QJsonObject body{
        {u"osType"_s, macDownload}, {u"reqhost"_s, serverAddress()}, {u"usehttps"_s, isHttpsServer()}};
    return call(spliceURLWithoutToken(u"update"_s, u"download"_s), QBApiManager::serialize(body), error);
}
