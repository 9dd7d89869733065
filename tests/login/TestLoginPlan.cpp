#include "login/LoginOutcome.h"
#include "login/LoginPlan.h"
#include "login/ThirdLoginOpener.h"
#include "support/TestMain.h"

#include <QJsonDocument>
#include <QTest>

using namespace Qt::StringLiterals;
using Face = LoginPlan::Face;
using Kind = LoginOutcome::Kind;

Q_DECLARE_METATYPE(LoginPlan::Face)
Q_DECLARE_METATYPE(LoginOutcome::Kind)

/// From the server's configuration to the face, and from its answers to what follows.
class TestLoginPlan : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void face_data();
    void face();
    void rules_data();
    void rules();
    void codeWays();
    void outcome_data();
    void outcome();
    void pictureCodeDemand();
    void thirdLoginAddress_data();
    void thirdLoginAddress();
};

static QJsonObject json(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}

void TestLoginPlan::face_data()
{
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<Face>("face");
    QTest::addColumn<bool>("toThird");
    QTest::addColumn<bool>("toNormal");
    QTest::addColumn<bool>("redirect");
    const auto row = [](const char *name, const char *info, Face face, bool toThird, bool toNormal, bool redirect) {
        QTest::newRow(name) << QByteArray(info) << face << toThird << toNormal << redirect;
    };
    row("no single sign-on", "{}", Face::Normal, false, false, false);
    row("null", R"({"thirdauth":null})", Face::Normal, false, false, false);
    row("of another type", R"({"thirdauth":[1]})", Face::Normal, false, false, false);
    row("single sign-on", R"({"thirdauth":{"config":{}}})", Face::ThirdLogin, true, true, false);
    row("no configuration", R"({"thirdauth":{}})", Face::ThirdLogin, true, true, false);
    row("hidden", R"({"thirdauth":{"config":{"hideThirdLogin":true,"autoCasRedirect":true}}})", Face::Normal, false,
        true, false);
    row("password hidden", R"({"thirdauth":{"config":{"hideLogin":true}}})", Face::ThirdLogin, true, false, false);
    row("flags as numbers", R"({"thirdauth":{"config":{"hideLogin":1,"hideThirdLogin":0}}})", Face::ThirdLogin, true,
        false, false);
    row("redirected", R"({"thirdauth":{"config":{"autoCasRedirect":true}}})", Face::ThirdLogin, true, true, true);
}

void TestLoginPlan::face()
{
    QFETCH(QByteArray, info);
    const LoginPlan plan = LoginPlan::of(json(info.constData()));
    QTEST(plan.face, "face");
    QTEST(plan.changeThirdModeVisible, "toThird");
    QTEST(plan.changeNormalModeVisible, "toNormal");
    QTEST(plan.autoCasRedirect, "redirect");
}

void TestLoginPlan::rules_data()
{
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<bool>("codeAtOnce");
    QTest::addColumn<bool>("quitAutoLogin");
    QTest::addColumn<bool>("forgotten");
    QTest::addColumn<bool>("oneTime");
    const auto row = [](const char *info, bool atOnce, bool quit, bool forgotten, bool oneTime) {
        QTest::newRow(info) << QByteArray(info) << atOnce << quit << forgotten << oneTime;
    };
    row("{}", false, false, false, false);
    row(R"({"vcode_login_config":{"isenable":true,"passwderrcnt":0}})", true, true, false, false);
    row(R"({"vcode_login_config":{"isenable":true,"passwderrcnt":"0"}})", true, true, false, false);
    row(R"({"vcode_login_config":{"isenable":true}})", true, true, false, false);
    row(R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})", false, true, false, false);
    row(R"({"vcode_login_config":{"isenable":false,"passwderrcnt":0}})", false, false, false, false);
    row(R"({"vcode_login_config":7})", false, false, false, false);
    row(R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})", false, true, false, true);
    row(R"({"dualfactor_auth_server_status":{"auth_by_sms":true}})", false, true, false, false);
    row(R"({"dualfactor_auth_server_status":{"auth_by_email":true}})", false, false, false, false);
    row(R"({"vcode_server_status":{"send_vcode_by_email":true}})", false, false, true, false);
    row(R"({"vcode_server_status":{"send_vcode_by_sms":true}})", false, false, true, false);
    row(R"({"vcode_server_status":{"send_vcode_by_sms":false}})", false, false, false, false);
}

void TestLoginPlan::rules()
{
    QFETCH(QByteArray, info);
    const LoginPlan plan = LoginPlan::of(json(info.constData()));
    QTEST(plan.pictureCodeAtOnce, "codeAtOnce");
    QTEST(plan.quitAutoLogin(), "quitAutoLogin");
    QTEST(plan.forgetPWDVisible, "forgotten");
    QTEST(plan.oneTimePassword, "oneTime");
}

void TestLoginPlan::codeWays()
{
    const char *status = R"("dualfactor_auth_server_status":{"auth_by_sms":true,"auth_by_email":false})";
    const QByteArray alone = QByteArray("{") + status + "}";
    QVERIFY2(!LoginPlan::of(json(alone.constData())).codeWays, "kept from an earlier start without single sign-on");
    QVERIFY(!LoginPlan::of(json(R"({"thirdauth":{}})")).codeWays);
    const QByteArray both = QByteArray("{\"thirdauth\":{},") + status + "}";
    const LoginPlan plan = LoginPlan::of(json(both.constData()));
    QVERIFY(plan.codeWays);
    QVERIFY(plan.codeWays->bySMS);
    QVERIFY(!plan.codeWays->byEmail);
}

void TestLoginPlan::outcome_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<Kind>("login");
    QTest::addColumn<Kind>("codeRequest");
    QTest::addColumn<QString>("text");
    const auto row = [](int code, Kind login, Kind codeRequest, const QString &text = {}) {
        QTest::addRow("%d", code) << code << login << codeRequest << text;
    };
    row(0, Kind::Success, Kind::Success);
    row(401037, Kind::SecondFactor, Kind::ShowError);
    row(401058, Kind::InformationAlert, Kind::InformationAlert, u"401058"_s);
    for (const int code : {403058, 404029, 401064})
        row(code, Kind::CautionAlert, Kind::CautionAlert, u"403058"_s);
    for (const int code : {401003, 401020, -1001})
        row(code, Kind::ShowError, Kind::ShowError);
}

void TestLoginPlan::outcome()
{
    QFETCH(int, code);
    const QBError error = code == 0 ? QBError() : QBError(QBError::serverDomain(), code);
    QTEST(LoginOutcome::ofLogin(error), "login");
    QTEST(LoginOutcome::ofCodeRequest(error), "codeRequest");
    QTEST(LoginOutcome::alertKey(LoginOutcome::ofCodeRequest(error)), "text");
}

void TestLoginPlan::pictureCodeDemand()
{
    QVERIFY(LoginOutcome::demandsPictureCode(json(R"({"detail":{"isShowStatus":true}})")));
    QVERIFY(!LoginOutcome::demandsPictureCode(json(R"({"detail":{"isShowStatus":false}})")));
    QVERIFY(!LoginOutcome::demandsPictureCode(json(R"({"detail":"isShowStatus"})")));
    QVERIFY(!LoginOutcome::demandsPictureCode({}));
}

void TestLoginPlan::thirdLoginAddress_data()
{
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *address, const char *expected) {
        QTest::newRow(address) << QString::fromLatin1(expected);
    };
    row("https://sso.example/login", "https://sso.example/login?platform=mac");
    row("https://sso.example/login?x=1", "https://sso.example/login?x=1&platform=mac");
    row("https://sso.example?", "https://sso.example?platform=mac");
    row("http://sso.example/a?x=%26y#f", "http://sso.example/a?x=%26y&platform=mac#f");
    row("file:///etc/passwd", nullptr);
    row("javascript:alert(1)", nullptr);
    row("https:///nohost", nullptr);
    row("sso.example", nullptr);
}

void TestLoginPlan::thirdLoginAddress()
{
    QTEST(thirdLoginURL(QString::fromLatin1(QTest::currentDataTag())), "expected");
}

REGISTER_TEST(TestLoginPlan)
#include "TestLoginPlan.moc"
