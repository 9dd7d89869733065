#include "login/LoginOutcome.h"
#include "login/LoginPlan.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;
using Face = LoginPlan::Face;

namespace
{
QJsonObject json(const QByteArray &text)
{
    return QJsonDocument::fromJson(text).object();
}

struct FacePlan {
    const char *name;
    QByteArray info;
    Face face;
    bool toThird;
    bool toNormal;
    bool redirect = false;
};

const QList<FacePlan> facePlans{
    {"no single sign-on", "{}", Face::Normal, false, false},
    {"null", R"({"thirdauth":null})", Face::Normal, false, false},
    {"of another type", R"({"thirdauth":[1]})", Face::Normal, false, false},
    {"single sign-on", R"({"thirdauth":{"config":{}}})", Face::ThirdLogin, true, true},
    {"no configuration", R"({"thirdauth":{}})", Face::ThirdLogin, true, true},
    {"hidden", R"({"thirdauth":{"config":{"hideThirdLogin":true,"autoCasRedirect":true}}})", Face::Normal, false, true},
    {"password hidden", R"({"thirdauth":{"config":{"hideLogin":true}}})", Face::ThirdLogin, true, false},
    {"flags as numbers", R"({"thirdauth":{"config":{"hideLogin":1,"hideThirdLogin":0}}})", Face::ThirdLogin, true,
     false},
    {"redirected", R"({"thirdauth":{"config":{"autoCasRedirect":true}}})", Face::ThirdLogin, true, true, true},
};

struct CodePlan {
    const char *name; ///< the server's configuration
    bool codeAtOnce;
    bool quitAutoLogin;
    bool forgotten = false;
    bool oneTime = false;
};

const QList<CodePlan> codePlans{
    {"{}", false, false},
    {R"({"vcode_login_config":{"isenable":true,"passwderrcnt":0}})", true, true},
    {R"({"vcode_login_config":{"isenable":true,"passwderrcnt":"0"}})", true, true},
    {R"({"vcode_login_config":{"isenable":true}})", true, true},
    {R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})", false, true},
    {R"({"vcode_login_config":{"isenable":false,"passwderrcnt":0}})", false, false},
    {R"({"vcode_login_config":7})", false, false},
    {R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})", false, true, false, true},
    {R"({"dualfactor_auth_server_status":{"auth_by_sms":true}})", false, true},
    {R"({"dualfactor_auth_server_status":{"auth_by_email":true}})", false, false},
    {R"({"vcode_server_status":{"send_vcode_by_email":true}})", false, false, true},
    {R"({"vcode_server_status":{"send_vcode_by_sms":true}})", false, false, true},
    {R"({"vcode_server_status":{"send_vcode_by_sms":false}})", false, false},
};
} // namespace

/// From the server's configuration to the face, and from its answers to what follows.
class TestLoginPlan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void face_data() { testing::addCases(facePlans); }
    void face()
    {
        const FacePlan &expected = testing::currentCase(facePlans);
        const LoginPlan plan = LoginPlan::of(json(expected.info));
        QCOMPARE(plan.face, expected.face);
        QCOMPARE(plan.changeThirdModeVisible, expected.toThird);
        QCOMPARE(plan.changeNormalModeVisible, expected.toNormal);
        QCOMPARE(plan.autoCasRedirect, expected.redirect);
    }

    void codes_data() { testing::addCases(codePlans); }
    void codes()
    {
        const CodePlan &expected = testing::currentCase(codePlans);
        const LoginPlan plan = LoginPlan::of(json(expected.name));
        QCOMPARE(plan.pictureCodeAtOnce, expected.codeAtOnce);
        QCOMPARE(plan.quitAutoLogin(), expected.quitAutoLogin);
        QCOMPARE(plan.forgetPWDVisible, expected.forgotten);
        QCOMPARE(plan.oneTimePassword, expected.oneTime);
    }

    void codeWays()
    {
        const QByteArray status = R"("dualfactor_auth_server_status":{"auth_by_sms":true,"auth_by_email":false})";
        QVERIFY2(!LoginPlan::of(json("{" + status + "}")).codeWays,
                 "kept from an earlier start without single sign-on");
        QVERIFY(!LoginPlan::of(json(R"({"thirdauth":{}})")).codeWays);
        const LoginPlan plan = LoginPlan::of(json("{\"thirdauth\":{}," + status + "}"));
        QVERIFY(plan.codeWays && plan.codeWays->bySMS && !plan.codeWays->byEmail);
    }

    void pictureCodeDemand()
    {
        for (const char *reply : {R"({"detail":{"isShowStatus":false}})", R"({"detail":"isShowStatus"})", "{}"})
            QVERIFY2(!LoginOutcome::demandsPictureCode(json(reply)), reply);
    }
};

REGISTER_TEST(TestLoginPlan)
#include "TestLoginPlan.moc"
