#include "ScenarioDefaults.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
QJsonObject signIn()
{
    return {
        {u"vcode_login_config"_s, QJsonObject{{u"isenable"_s, false}, {u"passwderrcnt"_s, 3}}},
        {u"dualfactor_auth_server_status"_s,
         QJsonObject{{u"auth_by_sms"_s, false}, {u"auth_by_email"_s, false}, {u"auth_by_OTP"_s, false}}},
        {u"vcode_server_status"_s, QJsonObject{{u"send_vcode_by_email"_s, false}, {u"send_vcode_by_sms"_s, false}}},
        {u"thirdauth"_s, QJsonValue::Null},
        {u"enable_strong_pwd"_s, false},
        {u"client_disabled"_s, false},
        {u"token_life"_s, 3600},
        {u"lock"_s, QJsonObject{{u"after"_s, 5}, {u"minutes"_s, 60}}},
        {u"picture_code"_s, QJsonObject{{u"life"_s, 180}}},
        {u"second_factor"_s, QJsonObject{{u"code_life"_s, 300},
                                         {u"send_interval"_s, 60},
                                         {u"wrong_codes"_s, 5},
                                         {u"sms"_s, u"ok"_s},
                                         {u"email"_s, u"ok"_s}}},
        {u"password"_s, QJsonObject{{u"initial_change"_s, false}, {u"life_days"_s, 0}}},
    };
}

QJsonObject organisation()
{
    return {
        {u"server_version"_s, u"7"_s},
        {u"internal_link_prefix"_s, u""_s},
        {u"oem"_s, QJsonObject{{u"autoPopUserAgreement"_s, false},
                               {u"agreementText"_s, u"You may use these documents for your work."_s},
                               {u"QuickStartURL"_s, u""_s}}},
        {u"needquickstart"_s, false},
        {u"share"_s, QJsonObject{{u"innerlink"_s, true}, {u"outerlink"_s, true}}},
        {u"update"_s, QJsonObject{{u"result"_s, u"ok"_s},
                                  {u"latest"_s, u""_s},
                                  {u"downloadurl"_s, u""_s},
                                  {u"file"_s, u""_s},
                                  {u"known"_s, true}}},
    };
}

QJsonObject documents()
{
    return {
        {u"quota"_s, 5LL << 30},
        {u"size_limit"_s, 0},
        {u"revisions"_s, 20},
        {u"allowperm"_s, 63},
        {u"permissions"_s, QJsonArray()},
        {u"banned_types"_s, QJsonArray()},
        {u"frozen_users"_s, QJsonArray()},
        {u"frozen_documents"_s, QJsonArray()},
        {u"unauthenticated_users"_s, QJsonArray()},
        {u"outbox"_s, QJsonArray()},
    };
}
} // namespace

QJsonObject scenarioDefaults()
{
    QJsonObject all = signIn();
    const QJsonObject rest = organisation();
    for (auto it = rest.begin(); it != rest.end(); ++it)
        all.insert(it.key(), it.value());
    all.insert(u"delay_ms"_s, 0);
    all.insert(u"fail"_s, QJsonObject());
    all.insert(u"cut"_s, QJsonObject());
    all.insert(u"documents"_s, documents());
    return all;
}

} // namespace documentserver
