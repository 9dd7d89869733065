#include "LoginScene.h"
#include "login/LoginVerifyWindowController.h"
#include "login/VerifyErrorText.h"
#include "support/Cases.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
constexpr std::chrono::hours Never{1};
constexpr int NoCountdown = -1;

struct Verification : LoginScene {
    explicit Verification(int interval = NoCountdown, std::chrono::milliseconds second = Never,
                          std::chrono::milliseconds patience = std::chrono::milliseconds(400), bool sentBefore = false)
        : LoginScene(patience)
    {
        VerifyErrorText::resetWrongCodes();
        platform::UserDefaults &defaults = client.defaults;
        defaults.set(u"loginusername"_s, u"ann"_s);
        defaults.set(u"loginpassword"_s, u"secret"_s);
        defaults.set(u"loginvcode"_s, QVariantMap{{u"vcode"_s, u"ab"_s}});
        defaults.set(u"oldtelnum"_s, u"138"_s);
        defaults.set(u"loginverifyphonenumber"_s, u"138"_s);
        defaults.set(u"loginverifytimer"_s, interval);
        if (sentBefore)
            defaults.set(u"isduplicatesended"_s, true);
        controller =
            std::make_unique<LoginVerifyWindowController>(client.networking, defaults, center, Branding(), second);
        controller->showWindow();
    }
    QWidget *window() { return controller->window(); }
    QString resendTitle() { return title(window(), "getVCodeButton"); }
    bool canResend() { return isEnabled(window(), "getVCodeButton"); }
    QString error() { return message(window(), "errorMessageTextField"); }
    QString destination() { return message(window(), "phoneNumberTextView"); }
    void typeCode(const QString &code) { type(window(), "verificationCodeTextField", code); }
    void verify(const QString &code)
    {
        typeCode(code);
        pressKey(window(), "verificationCodeTextField", Qt::Key_Return);
        QTRY_VERIFY(!title(window(), "verifyButton").isEmpty());
    }

    std::unique_ptr<LoginVerifyWindowController> controller;
};

struct Opening {
    const char *name;
    int interval;
    QString title;
    bool usable;
};

const QList<Opening> openings{
    {"given", 30, u"sendvcodeagain30"_s, false},
    {"0 is a minute", 0, u"sendvcodeagain60"_s, false},
    {"negative starts none", NoCountdown, u"sendvcode"_s, true},
};

struct Resend {
    const char *name;
    QByteArray reply;
    QString line;
    bool usable = true;
};

const QList<Resend> resends{
    {"sent", R"({"authway":"ann@x","sendinterval":9})", {}, false},
    {"nothing to count", R"({"authway":"ann@x"})", {}},
    {"sent before", R"({"isduplicatesended":true})", u"401059"_s},
    {"404029", R"({"errcode":404029,"errmsg":"m"})", u"404031"_s},
    {"404031", R"({"errcode":404031,"errmsg":"m"})", u"404031"_s},
    {"must change", R"({"errcode":401012,"errmsg":"m"})", {}},
};

struct BadReply {
    const char *name;
    bool verifying;
    ScriptedAnswer answer;
    QString line = u"LoginFailedBy"_s;
    bool up = true;
};

const ScriptedAnswer cut = ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{");
const ScriptedAnswer unknown = ScriptedAnswer::json(R"({"errcode":77,"errmsg":"m"})");
const QList<BadReply> badAnswers{
    {"verify: server down", true, {}, u"LoginFailedBy"_s, false},
    {"verify: hanging", true, ScriptedAnswer::hang()},
    {"verify: cut", true, cut},
    {"verify: not JSON", true, ScriptedAnswer::reply("<html>")},
    {"verify: an array", true, ScriptedAnswer::json("[]")},
    {"verify: unknown code", true, unknown, u"LoginFailedBym"_s},
    {"verify: code as text", true, ScriptedAnswer::json(R"({"errcode":"77","errmsg":5})")},
    {"verify: no session", true, ScriptedAnswer::json("{}"), u"NoSession"_s},
    {"resend: server down", false, {}, u"LoginFailedBy"_s, false},
    {"resend: hanging", false, ScriptedAnswer::hang()},
    {"resend: cut", false, cut},
    {"resend: unknown code", false, unknown, u"LoginFailedBym"_s},
    {"resend: wrong types", false, ScriptedAnswer::json(R"({"authway":[],"sendinterval":"soon"})"), {}},
};

struct WayOut {
    const char *name;
    void (*leave)(Verification &scene);
};

const QList<WayOut> waysOut{
    {"title bar", [](Verification &scene) { scene.window()->close(); }},
    {"Esc", [](Verification &scene) { QTest::keyClick(scene.window(), Qt::Key_Escape); }},
    {"password changed", [](Verification &scene) { scene.center.post(NotificationNames::closeLoginVerifyWindow()); }},
};
} // namespace

/// The second-factor window.
class TestLoginVerifyWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void opening_data() { testing::addCases(openings); }
    void opening()
    {
        const auto &[name, interval, title, usable] = testing::currentCase(openings);
        Verification scene(interval, Never, std::chrono::seconds(1), true);
        QCOMPARE(scene.resendTitle(), title);
        QCOMPARE(scene.canResend(), usable);
        QCOMPARE(scene.destination(), u"phonenumber138"_s);
        QCOMPARE(scene.error(), u"再次发送验证码的间隔时间必须大于60s"_s);
    }

    void countdown()
    {
        Verification scene(1, std::chrono::milliseconds(300));
        for (const QString &title : {u"sendvcodeagain1"_s, u"sendvcodeagain0"_s}) {
            QTRY_COMPARE(scene.resendTitle(), title);
            QVERIFY(!scene.canResend());
        }
        QTRY_COMPARE(scene.resendTitle(), u"sendvcode"_s);
        QVERIFY(scene.canResend());

        scene.controller->setTime(9);
        scene.window()->close();
        const QString title = scene.resendTitle();
        QTest::qWait(400);
        QCOMPARE(scene.resendTitle(), title);
    }

    void resend_data() { testing::addCases(resends); }
    void resend()
    {
        const auto &[name, reply, line, usable] = testing::currentCase(resends);
        Verification scene;
        scene.server.expect(codeCall, ScriptedAnswer::json(reply));
        Verification::pressTwice(scene.window(), "getVCodeButton");
        QVERIFY(!scene.canResend());
        QVERIFY(scene.server.waitForRequests(1));
        AWAIT(scene.canResend() || scene.resendTitle() == u"sendvcodeagain9"_s);
        QCOMPARE(scene.canResend(), usable);
        QCOMPARE(scene.error(), line);
        if (!usable) {
            QCOMPARE(scene.destination(), u"phonenumberann@x"_s);
            QCOMPARE(scene.body(0).value(u"oldtelnum"_s), QJsonValue(u"138"_s));
            QCOMPARE(scene.client.defaults.string(u"oldtelnum"_s), u"ann@x"_s);
            QCOMPARE(scene.client.defaults.integer(u"loginverifytimer"_s), 9);
        }
        if (QMessageBox *alert = Verification::alert())
            alert->close();
    }

    void success()
    {
        Verification scene;
        scene.controller->verifyVcode();
        QCOMPARE(scene.error(), u"pleaseinputvcode1"_s);
        scene.server.expect(signInCall, ScriptedAnswer::json(session));
        scene.server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
        scene.typeCode(u" 12"_s);
        Verification::pressTwice(scene.window(), "verifyButton");
        AWAIT(!scene.posted.isEmpty());
        QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
        QVERIFY(!scene.controller->isVisible());
        QCOMPARE(scene.client.defaults.string(u"oldtelnum"_s), u""_s);
        const QJsonObject code{{u"vcode"_s, u" 12"_s}};
        QCOMPARE(scene.body(0).value(u"dualfactorauthinfo"_s), QJsonValue(QJsonObject{{u"validcode"_s, code}}));
        QCOMPARE(scene.body(0).value(u"vcodeinfo"_s), QJsonValue(QJsonObject{{u"vcode"_s, u"ab"_s}}));
    }

    void badReplies_data() { testing::addCases(badAnswers); }
    void badReplies()
    {
        const auto &[name, verifying, answer, line, up] = testing::currentCase(badAnswers);
        Verification scene;
        if (up)
            scene.server.expect(verifying ? signInCall : codeCall, answer);
        else
            scene.server.stop(); // the network is lost between the two factors
        if (verifying)
            scene.verify(u"12"_s);
        else
            Verification::press(scene.window(), "getVCodeButton");
        AWAIT(scene.canResend());
        QVERIFY2(line.isEmpty() ? scene.error().isEmpty() : scene.error().startsWith(line), qPrintable(scene.error()));
        QVERIFY(scene.controller->isVisible());
        QVERIFY(Verification::isEnabled(scene.window(), "verifyButton"));
        QCOMPARE(scene.posted, QStringList());
    }

    /// The answer to the resend comes when the sign-in is complete, and concerns nobody any more.
    void successWhileResending()
    {
        ScriptedAnswer late = ScriptedAnswer::json(R"({"authway":"late@x","sendinterval":9})");
        late.drip = std::chrono::milliseconds(20);
        Verification scene(NoCountdown, Never, std::chrono::seconds(20));
        scene.server.expect(codeCall, late).expect(signInCall, ScriptedAnswer::json(session));
        scene.server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
        Verification::press(scene.window(), "getVCodeButton");
        QVERIFY(scene.server.waitForRequests(1));
        scene.typeCode(u"12"_s);
        Verification::press(scene.window(), "verifyButton");
        AWAIT(!scene.posted.isEmpty());
        QVERIFY2(!scene.canResend(), "the resend was answered too soon to show anything");
        QTRY_VERIFY_WITH_TIMEOUT(scene.canResend(), 15'000);
        QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
        QVERIFY(!scene.controller->isVisible());
        QCOMPARE(scene.error(), QString());
        QCOMPARE(scene.destination(), u"phonenumber138"_s);
        QCOMPARE(scene.client.defaults.string(u"oldtelnum"_s), u""_s);
    }

    /// A second Return must not press whatever comes next in the tab order.
    void focusHandOver()
    {
        for (const char *name : {"verifyButton", "getVCodeButton"}) {
            Verification scene;
            scene.server.answerAll(ScriptedAnswer::hang());
            scene.typeCode(u"1"_s);
            Verification::find(scene.window(), name)->setFocus(Qt::TabFocusReason);
            Verification::pressKey(scene.window(), name, Qt::Key_Return);
            QVERIFY(!Verification::isEnabled(scene.window(), name));
            QCOMPARE(scene.window()->focusWidget()->objectName(), u"verificationCodeTextField"_s);
        }
    }

    /// A password that is changed later on must not bring the login window back.
    void staleWindow()
    {
        Verification scene;
        scene.controller->close();
        scene.center.post(NotificationNames::closeLoginVerifyWindow());
        QCOMPARE(scene.posted, QStringList{u"NotificationCloseLoginVerifyWindow"_s});
    }

    void closing_data() { testing::addCases(waysOut); }
    void closing()
    {
        const auto &[name, leave] = testing::currentCase(waysOut);
        Verification scene;
        leave(scene);
        QCOMPARE(scene.posted.count(u"NotificationLoginVerifyWantLoginWindow"_s), 1);
        QVERIFY(!scene.controller->isVisible());
    }

    void gone()
    {
        Verification scene;
        scene.server.answerAll(ScriptedAnswer::json(session));
        scene.typeCode(u"1"_s);
        scene.controller->verifyVcode();
        scene.whenPosted = [&] { scene.controller.reset(); };
        scene.window()->close();
        QVERIFY(scene.server.waitForRequests(1));
        QTest::qWait(50); // what is still queued for the window must find nobody
        QVERIFY(!scene.controller);
        QCOMPARE(scene.posted, QStringList{u"NotificationLoginVerifyWantLoginWindow"_s});
    }
};

REGISTER_TEST(TestLoginVerifyWindow)
#include "TestLoginVerifyWindow.moc"
