#include "LoginScene.h"
#include "login/LoginWindowController.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QBuffer>
#include <QJsonDocument>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

Q_DECLARE_METATYPE(testing::ScriptedAnswer)

namespace
{
const QByteArray configuration = "POST /api/v1/auth1?method=getconfig";
const QByteArray signInCall = "POST /api/v1/auth1?method=getnew";
const QByteArray codeCall = "POST /api/v1/auth1?method=sendauthvcode";
const QByteArray pictureCall = "POST /api/v1/auth1?method=getvcode";
const QByteArray session = R"({"expires":3600,"userid":"u1","tokenid":"t1"})";
const QByteArray secondFactor = R"({"errcode":401037,"errmsg":"more"})";

QByteArray refusal(int code, const QByteArray &detail = {})
{
    return "{\"errcode\":" + QByteArray::number(code) + ",\"errmsg\":\"said\"" +
           (detail.isEmpty() ? QByteArray() : ",\"detail\":" + detail) + "}";
}

/// A login window with an account typed in.
struct Attempt : LoginScene {
    explicit Attempt(const QByteArray &info = "{}")
    {
        server.expect(configuration, ScriptedAnswer::json(info));
        controller->showLoginWindowAutoLoginIfNeeded(false);
        QTRY_VERIFY(controller->isVisible());
        QTRY_VERIFY(shows(window(), "viewNormal"));
        type(window(), "txtUserName", u"ann"_s);
        type(window(), "txtPassword", u"secret"_s);
    }
    QWidget *window() { return controller->window(); }
    bool idle() { return find<QAbstractButton>(window(), "btnLogin")->text() == u"LoginButtonTitle"_s; }
    QString error() { return message(window(), "txtErrorMessage"); }
    QJsonObject body(int request) const { return QJsonDocument::fromJson(server.bodies().at(request)).object(); }

    std::unique_ptr<LoginWindowController> controller =
        std::make_unique<LoginWindowController>(client.networking, client.defaults, center, *this);
};

/// How a stage answers, and what is left to see: an alert's text, the error line, or a notification.
struct Reply {
    const char *name;
    ScriptedAnswer answer;
    QString alert;
    QString line;
};

QList<Reply> refusals()
{
    return {{"wrong password", ScriptedAnswer::json(refusal(401003)), {}, u"LoginFailedBysaid"_s},
            {"401058", ScriptedAnswer::json(refusal(401058)), u"401058"_s, {}},
            {"403058", ScriptedAnswer::json(refusal(403058)), u"403058"_s, {}},
            {"404029", ScriptedAnswer::json(refusal(404029)), u"403058"_s, {}},
            {"401064", ScriptedAnswer::json(refusal(401064)), u"403058"_s, {}},
            {"password must change", ScriptedAnswer::json(refusal(401013)), u"AlertLoginFailedTitle"_s, {}},
            {"HTTP error with a code", ScriptedAnswer::json(refusal(500001), 500), {}, u"LoginFailedBysaid"_s},
            {"not JSON", ScriptedAnswer::reply("<html>"), {}, u"LoginFailedBy"_s},
            {"an array", ScriptedAnswer::json("[]"), {}, u"LoginFailedBy"_s},
            {"cut", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n{"), {}, u"LoginFailedBy"_s},
            {"hanging", ScriptedAnswer::hang(), {}, u"LoginFailedBy"_s}};
}
} // namespace

/// Every way a sign-in may end.
class TestLoginOutcomes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void success();
    void failures_data();
    void failures();
    void noSession();
    void secondFactorSent();
    void pictureCodeDemanded_data();
    void pictureCodeDemanded();
    void pictureRefreshed();
    void oneTimePassword();
    void submittedOnce();
    void lateAnswer();
    void gone_data();
    void gone();
    void longRefusal();
};

void TestLoginOutcomes::success()
{
    testing::LogRecorder log;
    Attempt attempt;
    attempt.server.expect(signInCall, ScriptedAnswer::json(session));
    attempt.server.expect("POST /api/v1/auth1?method=refreshtoken", ScriptedAnswer::json(R"({"expires":1})"));
    Attempt::press(attempt.window(), "btnRememberPassword");
    QTest::keyClick(Attempt::find(attempt.window(), "txtPassword"), Qt::Key_Return);
    QVERIFY(!attempt.idle());
    AWAIT(!attempt.posted.isEmpty());
    QCOMPARE(attempt.posted, QStringList{u"NotificationLoginSuccess"_s});
    QVERIFY(attempt.idle());
    QCOMPARE(attempt.client.defaults.string(u"AccountName"_s), u"ann"_s);
    QCOMPARE(attempt.client.defaults.string(u"EncryptPassword"_s), u"c2VjcmV0"_s);
    QVERIFY(attempt.server.waitForRequests(3));
    const QJsonObject body = attempt.body(1);
    QCOMPARE(attempt.client.plain(body.value(u"password"_s)), QByteArray("secret"));
    QCOMPARE(body.value(u"vcodeinfo"_s), QJsonValue(QJsonObject()));
    QCOMPARE(body.value(u"dualfactorauthinfo"_s), QJsonValue(QJsonObject()));
    QVERIFY2(!log.contains(u"secret"_s) && !log.contains(u"c2VjcmV0"_s), "a password in the log");
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::failures_data()
{
    QTest::addColumn<bool>("atCodeRequest");
    QTest::addColumn<int>("reply");
    const QList<Reply> all = refusals();
    for (int index = 0; index < all.size(); ++index) {
        QTest::addRow("sign-in: %s", all[index].name) << false << index;
        QTest::addRow("code request: %s", all[index].name) << true << index;
    }
}

void TestLoginOutcomes::failures()
{
    QFETCH(bool, atCodeRequest);
    QFETCH(int, reply);
    const Reply expected = refusals().at(reply);
    Attempt attempt;
    if (atCodeRequest)
        attempt.server.expect(signInCall, ScriptedAnswer::json(secondFactor)).expect(codeCall, expected.answer);
    else
        attempt.server.expect(signInCall, expected.answer);
    Attempt::press(attempt.window(), "btnRememberPassword");
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(attempt.idle());
    QMessageBox *alert = Attempt::alert();
    QCOMPARE(alert ? alert->text() : QString(), expected.alert);
    QVERIFY2(attempt.error().startsWith(expected.line) && attempt.error().isEmpty() == expected.line.isEmpty(),
             qPrintable(attempt.error()));
    QVERIFY(Attempt::find(attempt.window(), "btnLogin")->isEnabled());
    QCOMPARE(attempt.posted, QStringList());
    QVERIFY2(!attempt.client.defaults.contains(u"AccountName"_s), "remembered after a failure");
    QCOMPARE(attempt.client.defaults.contains(u"loginpassword"_s), atCodeRequest);
    if (alert)
        alert->close();
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::noSession()
{
    Attempt attempt;
    attempt.server.expect(signInCall, ScriptedAnswer::json("{}"));
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(attempt.idle());
    QCOMPARE(attempt.error(), u"NoSession"_s);
    QCOMPARE(attempt.posted, QStringList());
}

void TestLoginOutcomes::secondFactorSent()
{
    Attempt attempt;
    attempt.client.defaults.set(u"oldtelnum"_s, u"139"_s);
    attempt.server.expect(signInCall, ScriptedAnswer::json(secondFactor));
    attempt.server.expect(codeCall,
                          ScriptedAnswer::json(R"({"authway":"138****1","sendinterval":45,"isduplicatesended":true})"));
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(!attempt.posted.isEmpty());
    QCOMPARE(attempt.posted, QStringList{u"NotificationWantLoginVerifyWindow"_s});
    const platform::UserDefaults &defaults = attempt.client.defaults;
    QCOMPARE(defaults.string(u"loginusername"_s), u"ann"_s);
    QCOMPARE(defaults.string(u"loginpassword"_s), u"secret"_s);
    QVERIFY(!defaults.contains(u"loginvcode"_s));
    QCOMPARE(defaults.string(u"loginverifyphonenumber"_s), u"138****1"_s);
    QCOMPARE(defaults.string(u"oldtelnum"_s), u"138****1"_s);
    QCOMPARE(defaults.integer(u"loginverifytimer"_s), 45);
    QVERIFY(defaults.boolean(u"isduplicatesended"_s));
    QCOMPARE(defaults.string(u"AccountName"_s), u"ann"_s);
    QCOMPARE(attempt.body(2).value(u"oldtelnum"_s), QJsonValue(u""_s));
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::pictureCodeDemanded_data()
{
    QTest::addColumn<ScriptedAnswer>("picture");
    QTest::newRow("picture") << ScriptedAnswer::json(R"({"uuid":"u1","vcode":"iVBORw0KGgo="})");
    QTest::newRow("refused") << ScriptedAnswer::json(refusal(500001));
    QTest::newRow("not JSON") << ScriptedAnswer::reply("oops");
    QTest::newRow("hanging") << ScriptedAnswer::hang();
}

void TestLoginOutcomes::pictureCodeDemanded()
{
    QFETCH(ScriptedAnswer, picture);
    Attempt attempt(R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})");
    attempt.server.expect(signInCall, ScriptedAnswer::json(refusal(401003, R"({"isShowStatus":true})")))
        .expect(pictureCall, picture);
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(Attempt::shows(attempt.window(), "boxVcode"));
    QVERIFY(!Attempt::find(attempt.window(), "btnLogin")->isEnabled());
    AWAIT(attempt.server.requests().size() == 3);
    QVERIFY(attempt.body(2).value(u"uuid"_s) == QJsonValue(u""_s));
    Attempt::type(attempt.window(), "txtVcode", u"ab12"_s);
    attempt.server.expect(signInCall, ScriptedAnswer::json(refusal(401003)));
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(attempt.server.requests().size() == 4);
    AWAIT(attempt.idle());
    const QJsonObject sent = attempt.body(3).value(u"vcodeinfo"_s).toObject();
    QCOMPARE(sent.value(u"vcode"_s), QJsonValue(u"ab12"_s));
    QCOMPARE(sent.value(u"ismodify"_s), QJsonValue(false));
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::pictureRefreshed()
{
    QImage image(9, 9, QImage::Format_RGB32);
    image.fill(Qt::white);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    QVERIFY(buffer.open(QIODevice::WriteOnly) && image.save(&buffer, "PNG"));
    const QByteArray picture = R"(,"vcode":")" + bytes.toBase64() + "\"}";
    Attempt attempt(R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})");
    attempt.server.expect(signInCall, ScriptedAnswer::json(refusal(401003, R"({"isShowStatus":true})")))
        .expect(pictureCall, ScriptedAnswer::json(R"({"uuid":"first")" + picture));
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(attempt.server.requests().size() == 3);
    AWAIT(Attempt::find<QAbstractButton>(attempt.window(), "vcodeImage")->text().isEmpty());
    QTest::qWait(50);
    Attempt::type(attempt.window(), "txtVcode", u"ab"_s);
    attempt.server.expect("POST /api/v1/ping", ScriptedAnswer::json("{}"))
        .expect("POST /api/v1/ping", ScriptedAnswer::json("{}"))
        .expect(pictureCall, ScriptedAnswer::json(R"({"uuid":"second")" + picture));
    Attempt::press(attempt.window(), "vcodeImage");
    QCOMPARE(Attempt::text(attempt.window(), "txtVcode"), QString());
    QVERIFY(!Attempt::find(attempt.window(), "btnLogin")->isEnabled());
    AWAIT(attempt.server.requests().size() == 6);
    QCOMPARE(attempt.body(5).value(u"uuid"_s), QJsonValue(u"first"_s));

    attempt.server.stop();
    Attempt::press(attempt.window(), "vcodeImage");
    AWAIT(Attempt::alert());
    Attempt::alert()->close();
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::oneTimePassword()
{
    Attempt attempt(R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})");
    Attempt::type(attempt.window(), "txtOTPCode", u"123456"_s);
    attempt.server.expect(signInCall, ScriptedAnswer::json(refusal(401003)));
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(attempt.idle());
    const QJsonObject code{{u"OTP"_s, u"123456"_s}};
    QCOMPARE(attempt.body(1).value(u"dualfactorauthinfo"_s), QJsonValue(QJsonObject{{u"OTP"_s, code}}));
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::submittedOnce()
{
    Attempt attempt;
    attempt.server.expect(signInCall, ScriptedAnswer::json(refusal(401003)));
    QWidget *button = Attempt::find(attempt.window(), "btnLogin");
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Return);
    QCOMPARE(attempt.window()->focusWidget()->objectName(), u"txtPassword"_s);
    Attempt::pressTwice(attempt.window(), "btnLogin");
    attempt.controller->loginBtn();
    QTest::keyClick(Attempt::find(attempt.window(), "txtPassword"), Qt::Key_Return);
    QTest::keyClicks(Attempt::find(attempt.window(), "txtPassword"), u"x"_s);
    AWAIT(attempt.idle());
    QCOMPARE(Attempt::text(attempt.window(), "txtPassword"), u"secret"_s);
    QCOMPARE(attempt.server.complaint(), QString());
}

void TestLoginOutcomes::lateAnswer()
{
    Attempt attempt;
    attempt.server.expect(signInCall, ScriptedAnswer::hang()).expect(configuration, ScriptedAnswer::json("{}"));
    Attempt::press(attempt.window(), "btnLogin");
    QVERIFY(attempt.server.waitForRequests(2));
    attempt.controller->initialUI(); // a new configuration does not let go of the attempt
    AWAIT(attempt.server.requests().size() == 3);
    QVERIFY(!attempt.idle());
    AWAIT(attempt.idle());
    QVERIFY(attempt.error().startsWith(u"LoginFailedBy"_s));
}

void TestLoginOutcomes::gone_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<bool>("atEnd");
    QTest::newRow("during the call") << session << false;
    QTest::newRow("when told of the success") << session << true;
}

void TestLoginOutcomes::gone()
{
    QFETCH(QByteArray, reply);
    QFETCH(bool, atEnd);
    Attempt attempt;
    attempt.server.expect(signInCall, ScriptedAnswer::json(reply));
    attempt.server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
    if (atEnd)
        attempt.whenPosted = [&] { attempt.controller.reset(); };
    Attempt::press(attempt.window(), "btnLogin");
    if (!atEnd)
        attempt.controller.reset();
    QVERIFY(attempt.server.waitForRequests(2));
    AWAIT(!atEnd || !attempt.posted.isEmpty());
    QTest::qWait(50); // what is still queued for the window must find nobody
    QVERIFY(!attempt.controller);
    QCOMPARE(attempt.posted.size(), atEnd ? 1 : 0);
}

void TestLoginOutcomes::longRefusal()
{
    Attempt attempt;
    QCoreApplication::sendPostedEvents(); // the window has the size of its face
    const int width = attempt.window()->width();
    const QByteArray text = QByteArray("<b>") + QByteArray(20'000, 'W');
    attempt.server.expect(signInCall, ScriptedAnswer::json(R"({"errcode":77,"errmsg":")" + text + "\"}"));
    Attempt::press(attempt.window(), "btnLogin");
    AWAIT(attempt.idle());
    QVERIFY(attempt.error().size() < 500);
    QCOMPARE(Attempt::find<QLabel>(attempt.window(), "txtErrorMessage")->textFormat(), Qt::PlainText);
    QVERIFY(qAbs(attempt.window()->width() - width) <= 8);
    QVERIFY(attempt.window()->height() < 700);
    auto *line = Attempt::find<QLabel>(attempt.window(), "txtErrorMessage");
    QVERIFY(line->heightForWidth(line->width()) <= line->height()); // nothing is cut off
}

REGISTER_TEST(TestLoginOutcomes)
#include "TestLoginOutcomes.moc"
