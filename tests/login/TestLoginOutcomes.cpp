#include "LoginScene.h"
#include "login/LoginWindowController.h"
#include "support/Cases.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QBuffer>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
const QByteArray secondFactor = R"({"errcode":401037,"errmsg":"more"})";
const QByteArray pictureAfterErrors = R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})";

ScriptedAnswer refusal(int code, const QByteArray &detail = "{}", int status = 200, const QByteArray &text = "said")
{
    const QByteArray number = QByteArray::number(code);
    const QByteArray reply = "{\"errcode\":" + number + ",\"errmsg\":\"" + text + "\",\"detail\":" + detail + "}";
    return ScriptedAnswer::json(reply, status);
}

ScriptedAnswer pictureDemand()
{
    return refusal(401003, R"({"isShowStatus":true})");
}

/// A login window with an account typed in.
struct Attempt : LoginScene {
    explicit Attempt(const QByteArray &info = "{}")
    {
        server.expect(configurationCall, ScriptedAnswer::json(info));
        controller->showLoginWindowAutoLoginIfNeeded(false);
        QTRY_VERIFY(controller->isVisible());
        QTRY_VERIFY(shows(window(), "viewNormal"));
        type(window(), "txtUserName", u"ann"_s);
        type(window(), "txtPassword", u"secret"_s);
    }
    QWidget *window() { return controller->window(); }
    bool idle() { return title(window(), "btnLogin") == u"LoginButtonTitle"_s; }
    bool canSubmit() { return isEnabled(window(), "btnLogin"); }
    QString error() { return message(window(), "txtErrorMessage"); }
    void submit() { press(window(), "btnLogin"); }

    std::unique_ptr<LoginWindowController> controller =
        std::make_unique<LoginWindowController>(client.networking, client.defaults, center, *this);
};

/// How a stage answers, and what is left to see: an alert's text or the error line.
struct Refusal {
    const char *name;
    ScriptedAnswer answer;
    QString alert;
    QString line;
    bool atSignIn = true;
    bool atCodeRequest = true;
};

const QList<Refusal> refusals{
    {"wrong password", refusal(401003), {}, u"LoginFailedBysaid"_s},
    {"401058", refusal(401058), u"401058"_s, {}},
    {"403058", refusal(403058), u"403058"_s, {}},
    {"404029", refusal(404029), u"403058"_s, {}},
    {"401064", refusal(401064), u"403058"_s, {}},
    {"password must change", refusal(401013), u"AlertLoginFailedTitle"_s, {}},
    {"HTTP error with a code", refusal(500001, "{}", 500), {}, u"LoginFailedBysaid"_s},
    {"not JSON", ScriptedAnswer::reply("<html>"), {}, u"LoginFailedBy"_s},
    {"an array", ScriptedAnswer::json("[]"), {}, u"LoginFailedBy"_s},
    {"cut", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 50\r\n\r\n{"), {}, u"LoginFailedBy"_s},
    {"hanging", ScriptedAnswer::hang(), {}, u"LoginFailedBy"_s},
    {"no session", ScriptedAnswer::json("{}"), {}, u"NoSession"_s, true, false},
    {"second factor twice", refusal(401037), {}, u"LoginFailedBysaid"_s, false, true},
};

struct Picture {
    const char *name;
    ScriptedAnswer answer;
};

const QList<Picture> pictures{{"picture", ScriptedAnswer::json(R"({"uuid":"u1","vcode":"iVBORw0KGgo="})")},
                              {"refused", refusal(500001)},
                              {"not JSON", ScriptedAnswer::reply("oops")},
                              {"hanging", ScriptedAnswer::hang()}};

ScriptedAnswer whitePicture(const QByteArray &uuid)
{
    QImage image(9, 9, QImage::Format_RGB32);
    image.fill(Qt::white);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!buffer.open(QIODevice::WriteOnly) || !image.save(&buffer, "PNG"))
        qFatal("cannot write a picture");
    return ScriptedAnswer::json("{\"uuid\":\"" + uuid + "\",\"vcode\":\"" + bytes.toBase64() + "\"}");
}
} // namespace

/// Every way a sign-in may end.
class TestLoginOutcomes : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void success()
    {
        testing::LogRecorder log;
        Attempt attempt;
        attempt.server.expect(signInCall, ScriptedAnswer::json(session));
        attempt.server.expect("POST /api/v1/auth1?method=refreshtoken", ScriptedAnswer::json(R"({"expires":1})"));
        Attempt::press(attempt.window(), "btnAutoLogin"); // and with it the password's box
        Attempt::pressKey(attempt.window(), "txtPassword", Qt::Key_Return);
        QVERIFY(!attempt.idle());
        AWAIT(!attempt.posted.isEmpty());
        QCOMPARE(attempt.posted, QStringList{u"NotificationLoginSuccess"_s});
        QVERIFY(attempt.idle());
        QCOMPARE(attempt.client.defaults.string(u"AccountName"_s), u"ann"_s);
        QCOMPARE(attempt.client.defaults.string(u"EncryptPassword"_s), u"c2VjcmV0"_s);
        QCOMPARE(attempt.client.defaults.integer(u"AutoLogin"_s), 1);
        QVERIFY(attempt.server.waitForRequests(3));
        const QJsonObject body = attempt.body(1);
        QCOMPARE(attempt.client.plain(body.value(u"password"_s)), QByteArray("secret"));
        QCOMPARE(body.value(u"vcodeinfo"_s), QJsonValue(QJsonObject()));
        QCOMPARE(body.value(u"dualfactorauthinfo"_s), QJsonValue(QJsonObject()));
        QVERIFY2(!log.contains(u"secret"_s) && !log.contains(u"c2VjcmV0"_s), "a password in the log");
    }

    void failures_data()
    {
        QTest::addColumn<bool>("atCodeRequest");
        QTest::addColumn<int>("index");
        for (int index = 0; index < refusals.size(); ++index) {
            if (refusals[index].atSignIn)
                QTest::addRow("sign-in: %s", refusals[index].name) << false << index;
            if (refusals[index].atCodeRequest)
                QTest::addRow("code request: %s", refusals[index].name) << true << index;
        }
    }
    void failures()
    {
        QFETCH(bool, atCodeRequest);
        const Refusal &expected = testing::currentCase(refusals);
        Attempt attempt;
        if (atCodeRequest)
            attempt.server.expect(signInCall, ScriptedAnswer::json(secondFactor)).expect(codeCall, expected.answer);
        else
            attempt.server.expect(signInCall, expected.answer);
        Attempt::press(attempt.window(), "btnRememberPassword");
        attempt.submit();
        AWAIT(attempt.idle());
        QMessageBox *alert = Attempt::alert();
        QCOMPARE(alert ? alert->text() : QString(), expected.alert);
        QVERIFY2(attempt.error().startsWith(expected.line) && attempt.error().isEmpty() == expected.line.isEmpty(),
                 qPrintable(attempt.error()));
        QVERIFY(attempt.canSubmit());
        QCOMPARE(attempt.posted, QStringList());
        QVERIFY2(!attempt.client.defaults.contains(u"AccountName"_s), "remembered after a failure");
        QCOMPARE(attempt.client.defaults.contains(u"loginpassword"_s), atCodeRequest);
        if (alert)
            alert->close();
    }

    void secondFactorSent()
    {
        Attempt attempt;
        attempt.client.defaults.set(u"oldtelnum"_s, u"139"_s);
        attempt.server.expect(signInCall, ScriptedAnswer::json(secondFactor))
            .expect(codeCall, ScriptedAnswer::json(R"({"authway":"138****1","sendinterval":45})"));
        attempt.submit();
        AWAIT(!attempt.posted.isEmpty());
        QCOMPARE(attempt.posted, QStringList{u"NotificationWantLoginVerifyWindow"_s});
        const platform::UserDefaults &defaults = attempt.client.defaults;
        QCOMPARE(defaults.string(u"loginusername"_s), u"ann"_s);
        QCOMPARE(defaults.string(u"loginpassword"_s), u"secret"_s);
        QCOMPARE(defaults.string(u"oldtelnum"_s), u"138****1"_s);
        QCOMPARE(defaults.string(u"AccountName"_s), u"ann"_s);
        QCOMPARE(attempt.body(2).value(u"oldtelnum"_s), QJsonValue(u""_s));
    }

    void pictureCodeDemanded_data() { testing::addCases(pictures); }
    void pictureCodeDemanded()
    {
        const auto &[name, picture] = testing::currentCase(pictures);
        Attempt attempt(pictureAfterErrors);
        attempt.server.expect(signInCall, pictureDemand()).expect(pictureCall, picture);
        attempt.submit();
        AWAIT(Attempt::shows(attempt.window(), "boxVcode"));
        QVERIFY(!attempt.canSubmit());
        AWAIT(attempt.server.requests().size() == 3);
        QCOMPARE(attempt.body(2).value(u"uuid"_s), QJsonValue(u""_s));
        Attempt::type(attempt.window(), "txtVcode", u"ab12"_s);
        attempt.server.expect(signInCall, refusal(401003));
        attempt.submit();
        AWAIT(attempt.server.requests().size() == 4);
        AWAIT(attempt.idle());
        const QJsonObject sent = attempt.body(3).value(u"vcodeinfo"_s).toObject();
        QCOMPARE(sent.value(u"vcode"_s), QJsonValue(u"ab12"_s));
        QCOMPARE(sent.value(u"ismodify"_s), QJsonValue(false));
    }

    void pictureRefreshed()
    {
        Attempt attempt(pictureAfterErrors);
        attempt.server.expect(signInCall, pictureDemand()).expect(pictureCall, whitePicture("first"));
        attempt.submit();
        AWAIT(attempt.server.requests().size() == 3);
        AWAIT(Attempt::title(attempt.window(), "vcodeImage").isEmpty());
        QTest::qWait(50);
        Attempt::type(attempt.window(), "txtVcode", u"ab"_s);
        attempt.server.expect(pingCall, ScriptedAnswer::json("{}"))
            .expect(pingCall, ScriptedAnswer::json("{}"))
            .expect(pictureCall, whitePicture("second"));
        Attempt::press(attempt.window(), "vcodeImage");
        QCOMPARE(Attempt::text(attempt.window(), "txtVcode"), QString());
        QVERIFY(!attempt.canSubmit());
        AWAIT(attempt.server.requests().size() == 6);
        QCOMPARE(attempt.body(5).value(u"uuid"_s), QJsonValue(u"first"_s));

        attempt.server.stop();
        Attempt::press(attempt.window(), "vcodeImage");
        AWAIT(Attempt::alert());
        Attempt::alert()->close();
    }

    void oneTimePassword()
    {
        Attempt attempt(R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})");
        Attempt::type(attempt.window(), "txtOTPCode", u"123456"_s);
        attempt.server.expect(signInCall, refusal(401003));
        attempt.submit();
        AWAIT(attempt.idle());
        const QJsonObject code{{u"OTP"_s, u"123456"_s}};
        QCOMPARE(attempt.body(1).value(u"dualfactorauthinfo"_s), QJsonValue(QJsonObject{{u"OTP"_s, code}}));
    }

    void submittedOnce()
    {
        Attempt attempt;
        attempt.server.expect(signInCall, refusal(401003));
        Attempt::find(attempt.window(), "btnLogin")->setFocus(Qt::TabFocusReason);
        Attempt::pressKey(attempt.window(), "btnLogin", Qt::Key_Return);
        QCOMPARE(attempt.window()->focusWidget()->objectName(), u"txtPassword"_s);
        Attempt::pressTwice(attempt.window(), "btnLogin");
        attempt.controller->loginBtn();
        Attempt::pressKey(attempt.window(), "txtPassword", Qt::Key_Return);
        Attempt::pressKey(attempt.window(), "txtPassword", Qt::Key_X);
        AWAIT(attempt.idle());
        QCOMPARE(Attempt::text(attempt.window(), "txtPassword"), u"secret"_s);
    }

    void lateAnswer()
    {
        Attempt attempt;
        attempt.server.expect(signInCall, ScriptedAnswer::hang()).expect(configurationCall, ScriptedAnswer::json("{}"));
        attempt.submit();
        QVERIFY(attempt.server.waitForRequests(2));
        attempt.controller->initialUI(); // a new configuration does not let go of the attempt
        AWAIT(attempt.server.requests().size() == 3);
        QVERIFY(!attempt.idle());
        AWAIT(attempt.idle());
        QVERIFY(attempt.error().startsWith(u"LoginFailedBy"_s));
    }

    void gone_data()
    {
        QTest::addColumn<bool>("atEnd");
        QTest::newRow("during the call") << false;
        QTest::newRow("when told of the success") << true;
    }
    void gone()
    {
        QFETCH(bool, atEnd);
        Attempt attempt;
        attempt.server.expect(signInCall, ScriptedAnswer::json(session));
        attempt.server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
        if (atEnd)
            attempt.whenPosted = [&] { attempt.controller.reset(); };
        attempt.submit();
        if (!atEnd)
            attempt.controller.reset();
        QVERIFY(attempt.server.waitForRequests(2));
        AWAIT(!atEnd || !attempt.posted.isEmpty());
        QTest::qWait(50); // what is still queued for the window must find nobody
        QVERIFY(!attempt.controller);
        QCOMPARE(attempt.posted.size(), atEnd ? 1 : 0);
    }

    void longRefusal()
    {
        Attempt attempt;
        QCoreApplication::sendPostedEvents(); // the window has the size of its face
        const int width = attempt.window()->width();
        attempt.server.expect(signInCall, refusal(77, "{}", 200, "<b>" + QByteArray(20'000, 'W')));
        attempt.submit();
        AWAIT(attempt.idle());
        QVERIFY(attempt.error().size() < 500);
        auto *line = Attempt::find<QLabel>(attempt.window(), "txtErrorMessage");
        QCOMPARE(line->textFormat(), Qt::PlainText);
        QVERIFY(qAbs(attempt.window()->width() - width) <= 8);
        QVERIFY(attempt.window()->height() < 700);
        QVERIFY(line->heightForWidth(line->width()) <= line->height()); // nothing is cut off
    }
};

REGISTER_TEST(TestLoginOutcomes)
#include "TestLoginOutcomes.moc"
