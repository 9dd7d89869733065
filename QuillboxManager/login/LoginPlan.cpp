#include "login/LoginPlan.h"

#include "login/JsonValues.h"

namespace
{
using JsonValues::boolean;
using JsonValues::object;

QString key(const char *name)
{
    return QLatin1String(name);
}

void readPictureCode(LoginPlan &plan, const QJsonObject &info)
{
    const QJsonObject config = object(info, key("vcode_login_config"));
    plan.pictureCodeEnabled = boolean(config, key("isenable"));
    const qint64 toleratedErrors = plan.pictureCodeEnabled ? JsonValues::integer(config, key("passwderrcnt")) : 1;
    plan.pictureCodeAtOnce = toleratedErrors == 0;
}

void readSecondFactor(LoginPlan &plan, const QJsonObject &info)
{
    const QJsonObject status = object(info, key("dualfactor_auth_server_status"));
    plan.oneTimePassword = boolean(status, key("auth_by_OTP"));
    plan.codeBySMS = boolean(status, key("auth_by_sms"));
}

void readThirdAuth(LoginPlan &plan, const QJsonObject &info)
{
    const QJsonObject thirdauth = object(info, key("thirdauth"));
    const QJsonObject config = object(thirdauth, key("config"));
    const bool hidden = boolean(config, key("hideThirdLogin"));
    plan.face = hidden ? LoginPlan::Face::Normal : LoginPlan::Face::ThirdLogin;
    plan.changeThirdModeVisible = !hidden;
    plan.defaultsAfterPictureCode = true;
    plan.changeNormalModeVisible = !boolean(config, key("hideLogin"));
    plan.loginButtonText = JsonValues::text(config, key("loginButtonText"));
    plan.autoCasRedirect = !hidden && boolean(config, key("autoCasRedirect"));
    plan.authServer = JsonValues::text(config, key("authServer"));
    plan.authID = JsonValues::text(thirdauth, key("id"));

    const QString status = key("dualfactor_auth_server_status");
    if (JsonValues::hasObject(info, status)) {
        const QJsonObject ways = object(info, status);
        plan.codeWays = LoginPlan::CodeWays{boolean(ways, key("auth_by_sms")), boolean(ways, key("auth_by_email"))};
    }
}
} // namespace

LoginPlan LoginPlan::of(const QJsonObject &dicAuthInfo)
{
    LoginPlan plan;
    const QJsonObject vcodeServer = object(dicAuthInfo, key("vcode_server_status"));
    plan.forgetPWDVisible =
        boolean(vcodeServer, key("send_vcode_by_email")) || boolean(vcodeServer, key("send_vcode_by_sms"));
    readPictureCode(plan, dicAuthInfo);
    readSecondFactor(plan, dicAuthInfo);
    // Without single sign-on the ways of the code stay what an earlier start stored.
    if (JsonValues::hasObject(dicAuthInfo, key("thirdauth")))
        readThirdAuth(plan, dicAuthInfo);
    return plan;
}

bool LoginPlan::hidesLogin(const QVariantMap &thirdPartyDic)
{
    const QJsonObject thirdauth = object(QJsonObject::fromVariantMap(thirdPartyDic), key("thirdauth"));
    return JsonValues::integer(object(thirdauth, key("config")), key("hideLogin")) == 1;
}
