#include "CallTable.h"

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
/// Addresses of this server's own pages are written without host and port in scenarios, as the ports may be any.
QJsonObject withWholeAddresses(QJsonObject settings, const QString &origin)
{
    for (auto it = settings.begin(); it != settings.end(); ++it)
        if (const QString text = it->toString(); text.startsWith(u'/'))
            *it = origin + text;
    return settings;
}

/// Tickets are the server's own business.
QJsonValue publicThirdAuth(const Call &call)
{
    const QJsonObject configured = call.scenario->object("thirdauth");
    return QJsonObject{{u"id"_s, configured.value("id"_L1)},
                       {u"config"_s, withWholeAddresses(configured.value("config"_L1).toObject(), call.origin)}};
}

QJsonObject serverConfiguration(const Call &call, Services &services)
{
    const Scenario &scenario = *call.scenario;
    QJsonObject reply{{u"https"_s, services.httpsPort > 0},
                      {u"https_port"_s, services.httpsPort > 0 ? services.httpsPort.load() : 0},
                      {u"port"_s, services.httpPort > 0 ? services.httpPort.load() : 0}};
    for (const char *name : {"vcode_login_config", "dualfactor_auth_server_status", "vcode_server_status",
                             "enable_strong_pwd", "server_version", "internal_link_prefix"})
        reply.insert(QLatin1String(name), scenario.value(name));
    if (scenario.value("thirdauth").isObject())
        reply.insert("thirdauth"_L1, publicThirdAuth(call));
    return reply;
}

QJsonObject oemSection(const Call &call)
{
    if (requiredText(call.body, "section", 128) != "quillbox"_L1)
        throw ApiError{UnknownSection, {}, {}, {}};
    return withWholeAddresses(call.scenario->object("oem"), call.origin);
}

QJsonObject hostInformation(const Call &call)
{
    const bool https = requiredFlag(call.body, "https");
    return {{u"https"_s, https ? 1 : 0}, {u"port"_s, requiredNumber(call.body, "port", 0, 65535)}};
}

QString quickStartFlag()
{
    return u"quickstartseen"_s;
}

QJsonObject clientConfiguration(const Call &call, Services &services)
{
    requiredNumber(call.body, "ostype", 0, 1000);
    const bool seen = services.flags.value(call.session->userid, quickStartFlag()) != 0;
    return {{u"needquickstart"_s, call.scenario->flag("needquickstart") && !seen}};
}

QJsonObject quickStartSeen(const Call &call, Services &services)
{
    requiredNumber(call.body, "ostype", 0, 1000);
    services.flags.set(call.session->userid, quickStartFlag(), 1);
    return {};
}
} // namespace

void addConfigurationCalls(CallTable *table, Services &services)
{
    table->insert(u"auth1.getconfig"_s,
                  {[&services](const Call &call) { return serverConfiguration(call, services); }, false});
    table->insert(u"config.getoemconfigbysection"_s, {oemSection});
    table->insert(u"config.get"_s, {[&services](const Call &call) { return clientConfiguration(call, services); }});
    table->insert(u"config.setquickstartstatus"_s,
                  {[&services](const Call &call) { return quickStartSeen(call, services); }});
    table->insert(u"perm1.getsharedocconfig"_s, {[](const Call &call) { return call.scenario->object("share"); }});
    table->insert(u"redirect.gethostinfo"_s, {hostInformation});
}

} // namespace documentserver
