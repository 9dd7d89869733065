#include "LoginScene.h"
#include "login/LoginVerifyWindowController.h"
#include "login/VerifyErrorText.h"
#include "support/TestMain.h"

#include <QJsonDocument>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

Q_DECLARE_METATYPE(testing::ScriptedAnswer)

namespace
{
const QByteArray signInCall = "POST /api/v1/auth1?method=getnew";
const QByteArray codeCall = "POST /api/v1/auth1?method=sendauthvcode";

struct Verification : LoginScene {
    /// A countdown whose seconds never pass, unless told otherwise.
    explicit Verification(std::chrono::milliseconds second = std::chrono::hours(1), int interval = 30,
                          std::chrono::milliseconds patience = std::chrono::milliseconds(400))
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
        controller =
            std::make_unique<LoginVerifyWindowController>(client.networking, defaults, center, Branding(), second);
    }
    QWidget *window() { return controller->window(); }
    QAbstractButton *resend() { return find<QAbstractButton>(window(), "getVCodeButton"); }
    QString error() { return message(window(), "errorMessageTextField"); }
    QString destination() { return message(window(), "phoneNumberTextView"); }
    bool idle() { return !find<QAbstractButton>(window(), "verifyButton")->text().isEmpty(); }
    void verify(const QString &code)
    {
        type(window(), "verificationCodeTextField", code);
        QTest::keyClick(find(window(), "verificationCodeTextField"), Qt::Key_Return);
        QTRY_VERIFY(idle());
    }
    QJsonObject body(int request) const { return QJsonDocument::fromJson(server.bodies().at(request)).object(); }

    std::unique_ptr<LoginVerifyWindowController> controller;
};
} // namespace

/// The second-factor window.
class TestLoginVerifyWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void opening_data();
    void opening();
    void countdown();
    void resend_data();
    void resend();
    void resentTo();
    void success();
    void badReplies_data();
    void badReplies();
    void successWhileResending();
    void focusHandOver();
    void staleWindow();
    void wrongCodes();
    void closing_data();
    void closing();
    void gone();
};

void TestLoginVerifyWindow::opening_data()
{
    QTest::addColumn<int>("interval");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("usable");
    QTest::newRow("given") << 30 << u"sendvcodeagain30"_s << false;
    QTest::newRow("0 is a minute") << 0 << u"sendvcodeagain60"_s << false;
    QTest::newRow("negative starts none") << -5 << u"sendvcode"_s << true;
}

void TestLoginVerifyWindow::opening()
{
    QFETCH(int, interval);
    Verification scene(std::chrono::hours(1), interval);
    scene.client.defaults.set(u"isduplicatesended"_s, true);
    scene.controller->showWindow();
    QTEST(scene.resend()->text(), "title");
    QTEST(scene.resend()->isEnabled(), "usable");
    QCOMPARE(scene.destination(), u"phonenumber138"_s);
    QCOMPARE(scene.error(), u"再次发送验证码的间隔时间必须大于60s"_s);
}

void TestLoginVerifyWindow::countdown()
{
    Verification scene(std::chrono::milliseconds(300), 2);
    scene.controller->showWindow();
    scene.controller->setTime(0);
    for (const QString &title : {u"sendvcodeagain2"_s, u"sendvcodeagain1"_s, u"sendvcodeagain0"_s}) {
        QTRY_COMPARE(scene.resend()->text(), title);
        QVERIFY(!scene.resend()->isEnabled());
    }
    QTRY_COMPARE(scene.resend()->text(), u"sendvcode"_s);
    QVERIFY(scene.resend()->isEnabled());

    scene.controller->setTime(9);
    scene.window()->close();
    const QString title = scene.resend()->text();
    QTest::qWait(400);
    QCOMPARE(scene.resend()->text(), title);
}

void TestLoginVerifyWindow::resend_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("usable");
    QTest::newRow("sent") << QByteArray(R"({"authway":"ann@x","sendinterval":9})") << QString() << false;
    QTest::newRow("nothing to count") << QByteArray(R"({"authway":"ann@x"})") << QString() << true;
    QTest::newRow("sent before") << QByteArray(R"({"isduplicatesended":true})") << u"401059"_s << true;
    QTest::newRow("404029") << QByteArray(R"({"errcode":404029,"errmsg":"m"})") << u"404031"_s << true;
    QTest::newRow("404031") << QByteArray(R"({"errcode":404031,"errmsg":"m"})") << u"404031"_s << true;
    QTest::newRow("another error") << QByteArray(R"({"errcode":7,"errmsg":"m"})") << u"LoginFailedBym"_s << true;
    QTest::newRow("must change") << QByteArray(R"({"errcode":401012,"errmsg":"m"})") << QString() << true;
}

void TestLoginVerifyWindow::resend()
{
    QFETCH(QByteArray, reply);
    QFETCH(bool, usable);
    Verification scene(std::chrono::hours(1), -1);
    scene.controller->showWindow();
    scene.server.expect(codeCall, ScriptedAnswer::json(reply));
    Verification::pressTwice(scene.window(), "getVCodeButton");
    QVERIFY(!scene.resend()->isEnabled());
    QVERIFY(scene.server.waitForRequests(1));
    AWAIT(scene.resend()->isEnabled() || scene.resend()->text() == u"sendvcodeagain9"_s);
    QCOMPARE(scene.resend()->isEnabled(), usable);
    QTEST(scene.error(), "line");
    if (QMessageBox *alert = Verification::alert())
        alert->close();
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginVerifyWindow::resentTo()
{
    Verification scene(std::chrono::hours(1), -1);
    scene.controller->showWindow();
    scene.server.expect(codeCall, ScriptedAnswer::json(R"({"authway":"ann@x","sendinterval":9})"));
    scene.controller->getVcode();
    AWAIT(scene.destination() == u"phonenumberann@x"_s);
    QCOMPARE(scene.body(0).value(u"oldtelnum"_s), QJsonValue(u"138"_s));
    QCOMPARE(scene.client.defaults.string(u"oldtelnum"_s), u"ann@x"_s);
    QCOMPARE(scene.client.defaults.integer(u"loginverifytimer"_s), 9);
}

void TestLoginVerifyWindow::success()
{
    Verification scene;
    scene.controller->showWindow();
    scene.controller->verifyVcode();
    QCOMPARE(scene.error(), u"pleaseinputvcode1"_s);
    scene.server.expect(signInCall, ScriptedAnswer::json(R"({"expires":1,"userid":"u","tokenid":"t"})"));
    scene.server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
    Verification::type(scene.window(), "verificationCodeTextField", u" 12"_s);
    Verification::pressTwice(scene.window(), "verifyButton");
    AWAIT(!scene.posted.isEmpty());
    QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
    QVERIFY(!scene.controller->isVisible());
    QCOMPARE(scene.client.defaults.string(u"oldtelnum"_s), u""_s);
    const QJsonObject code{{u"vcode"_s, u" 12"_s}};
    QCOMPARE(scene.body(0).value(u"dualfactorauthinfo"_s), QJsonValue(QJsonObject{{u"validcode"_s, code}}));
    QCOMPARE(scene.body(0).value(u"vcodeinfo"_s), QJsonValue(QJsonObject{{u"vcode"_s, u"ab"_s}}));
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginVerifyWindow::badReplies_data()
{
    QTest::addColumn<bool>("verifying");
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<bool>("up");
    QTest::addColumn<QString>("line");
    for (const bool verifying : {true, false}) {
        const auto row = [verifying](const char *name, const ScriptedAnswer &answer, const QString &line,
                                     bool up = true) {
            QTest::addRow("%s: %s", verifying ? "verify" : "resend", name) << verifying << answer << up << line;
        };
        const QString general = u"LoginFailedBy"_s;
        row("server down", {}, general, false);
        row("hanging", ScriptedAnswer::hang(), general);
        row("cut", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\n{"), general);
        row("not JSON", ScriptedAnswer::reply("<html>"), general);
        row("an array", ScriptedAnswer::json("[]"), general);
        row("unknown code", ScriptedAnswer::json(R"({"errcode":77,"errmsg":"m"})"), u"LoginFailedBym"_s);
        row("code as text", ScriptedAnswer::json(R"({"errcode":"77","errmsg":5})"), general);
    }
    QTest::newRow("verify: no session") << true << ScriptedAnswer::json("{}") << true << u"NoSession"_s;
    QTest::newRow("resend: wrong types") << false << ScriptedAnswer::json(R"({"authway":[],"sendinterval":"soon"})")
                                         << true << u""_s;
}

void TestLoginVerifyWindow::badReplies()
{
    QFETCH(bool, verifying);
    QFETCH(ScriptedAnswer, answer);
    QFETCH(bool, up);
    QFETCH(QString, line);
    Verification scene(std::chrono::hours(1), -1);
    scene.controller->showWindow();
    if (up)
        scene.server.expect(verifying ? signInCall : codeCall, answer);
    else
        scene.server.stop(); // the network is lost between the two factors
    if (verifying) {
        scene.verify(u"12"_s);
    } else {
        Verification::press(scene.window(), "getVCodeButton");
        AWAIT(scene.resend()->isEnabled());
    }
    QVERIFY2(line.isEmpty() ? scene.error().isEmpty() : scene.error().startsWith(line), qPrintable(scene.error()));
    QVERIFY(scene.controller->isVisible());
    QVERIFY(Verification::find(scene.window(), "verifyButton")->isEnabled());
    QCOMPARE(scene.posted, QStringList());
    QCOMPARE(scene.server.complaint(), QString());
}

/// The answer to the resend comes when the sign-in is complete, and concerns nobody any more.
void TestLoginVerifyWindow::successWhileResending()
{
    ScriptedAnswer late = ScriptedAnswer::json(R"({"authway":"late@x","sendinterval":9})");
    late.drip = std::chrono::milliseconds(20);
    Verification scene(std::chrono::hours(1), -1, std::chrono::seconds(20));
    scene.controller->showWindow();
    scene.server.expect(codeCall, late)
        .expect(signInCall, ScriptedAnswer::json(R"({"expires":1,"userid":"u","tokenid":"t"})"));
    scene.server.answerAll(ScriptedAnswer::json(R"({"expires":1})"));
    Verification::press(scene.window(), "getVCodeButton");
    QVERIFY(scene.server.waitForRequests(1));
    Verification::type(scene.window(), "verificationCodeTextField", u"12"_s);
    Verification::press(scene.window(), "verifyButton");
    AWAIT(!scene.posted.isEmpty());
    QVERIFY2(!scene.resend()->isEnabled(), "the resend was answered too soon to show anything");
    QTRY_VERIFY_WITH_TIMEOUT(scene.resend()->isEnabled(), 15'000);
    QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
    QVERIFY(!scene.controller->isVisible());
    QCOMPARE(scene.error(), QString());
    QCOMPARE(scene.destination(), u"phonenumber138"_s);
    QCOMPARE(scene.client.defaults.string(u"oldtelnum"_s), u""_s);
    QCOMPARE(scene.server.complaint(), QString());
}

/// A second Return must not press whatever comes next in the tab order.
void TestLoginVerifyWindow::focusHandOver()
{
    for (const char *name : {"verifyButton", "getVCodeButton"}) {
        Verification scene(std::chrono::hours(1), -1);
        scene.controller->showWindow();
        scene.server.answerAll(ScriptedAnswer::hang());
        Verification::type(scene.window(), "verificationCodeTextField", u"1"_s);
        QWidget *button = Verification::find(scene.window(), name);
        button->setFocus(Qt::TabFocusReason);
        QTest::keyClick(button, Qt::Key_Return);
        QVERIFY(!button->isEnabled());
        QCOMPARE(scene.window()->focusWidget()->objectName(), u"verificationCodeTextField"_s);
    }
}

/// A password that is changed later on must not bring the login window back.
void TestLoginVerifyWindow::staleWindow()
{
    Verification scene;
    scene.controller->showWindow();
    scene.controller->close();
    scene.center.post(NotificationNames::closeLoginVerifyWindow());
    QCOMPARE(scene.posted, QStringList{u"NotificationCloseLoginVerifyWindow"_s});
}

void TestLoginVerifyWindow::wrongCodes()
{
    Verification scene;
    scene.controller->showWindow();
    scene.server.answerAll(ScriptedAnswer::json(R"({"errcode":401039,"errmsg":"m"})"));
    for (int attempt = 1; attempt <= 4; ++attempt) {
        scene.verify(u"1"_s);
        QCOMPARE(scene.error(), attempt < 4 ? u"LoginFailedBym"_s : u"验证码错误次数过多"_s);
    }
    QCOMPARE(scene.posted, QStringList());
    QCOMPARE(scene.server.requests().size(), 4);
}

void TestLoginVerifyWindow::closing_data()
{
    QTest::addColumn<int>("way");
    QTest::newRow("title bar") << 0;
    QTest::newRow("Esc") << 1;
    QTest::newRow("password changed") << 2;
}

void TestLoginVerifyWindow::closing()
{
    QFETCH(int, way);
    Verification scene;
    scene.controller->showWindow();
    if (way == 0)
        scene.window()->close();
    else if (way == 1)
        QTest::keyClick(scene.window(), Qt::Key_Escape);
    else
        scene.center.post(NotificationNames::closeLoginVerifyWindow());
    QCOMPARE(scene.posted.count(u"NotificationLoginVerifyWantLoginWindow"_s), 1);
    QVERIFY(!scene.controller->isVisible());
}

void TestLoginVerifyWindow::gone()
{
    Verification scene;
    scene.controller->showWindow();
    scene.server.answerAll(ScriptedAnswer::json(R"({"expires":1,"userid":"u","tokenid":"t"})"));
    Verification::type(scene.window(), "verificationCodeTextField", u"1"_s);
    scene.controller->verifyVcode();
    scene.whenPosted = [&] { scene.controller.reset(); };
    scene.window()->close();
    QVERIFY(scene.server.waitForRequests(1));
    QTest::qWait(50); // what is still queued for the window must find nobody
    QVERIFY(!scene.controller);
    QCOMPARE(scene.posted, QStringList{u"NotificationLoginVerifyWantLoginWindow"_s});
}

REGISTER_TEST(TestLoginVerifyWindow)
#include "TestLoginVerifyWindow.moc"
