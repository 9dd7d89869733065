#include "LoginScene.h"
#include "login/LoginWindowController.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
const QByteArray configuration = "POST /api/v1/auth1?method=getconfig";
const QByteArray signInCall = "POST /api/v1/auth1?method=getnew";
const QByteArray pictureCall = "POST /api/v1/auth1?method=getvcode";
const QByteArray pictureReply = R"({"uuid":"u1","vcode":""})";

struct Window : LoginScene {
    void show(const QByteArray &info, bool autoLogin = false)
    {
        server.expect(configuration, ScriptedAnswer::json(info));
        showAgain(autoLogin);
    }
    void showAgain(bool autoLogin = false)
    {
        controller->showLoginWindowAutoLoginIfNeeded(autoLogin);
        QTRY_VERIFY(controller->isVisible());
        QTRY_VERIFY(!shows(window(), "waitingIndicatorPlace"));
    }
    QWidget *window() { return controller->window(); }
    void remember(const QString &account, const QString &password, int autoLogin)
    {
        client.defaults.set(u"AccountName"_s, account);
        client.defaults.set(u"EncryptPassword"_s, QString::fromLatin1(password.toUtf8().toBase64()));
        client.defaults.set(u"AutoLogin"_s, autoLogin);
    }

    std::unique_ptr<LoginWindowController> controller =
        std::make_unique<LoginWindowController>(client.networking, client.defaults, center, *this);
};
} // namespace

/// The faces of the login window and what leads away from it.
class TestLoginWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void faces_data();
    void faces();
    void switching();
    void codeBoxStays_data();
    void codeBoxStays();
    void autoLogin_data();
    void autoLogin();
    void remembered();
    void checkBoxes();
    void validation();
    void missingConfiguration();
    void lateConfiguration();
    void redirect();
    void thirdLogin_data();
    void thirdLogin();
    void forgottenPassword_data();
    void forgottenPassword();
    void closing();
    void focusColours();
};

void TestLoginWindow::faces_data()
{
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<QStringList>("shown");
    QTest::addColumn<QStringList>("hidden");
    const auto row = [](const char *name, const char *info, const QStringList &shown, const QStringList &hidden) {
        QTest::newRow(name) << QByteArray(info) << shown << hidden;
    };
    row("plain", "{}", {u"viewNormal"_s, u"btnAutoLogin"_s},
        {u"viewThird"_s, u"viewWaiting"_s, u"btnForgetPWD"_s, u"btnChangeThirdMode"_s, u"boxVcode"_s, u"btnRetry"_s});
    row("forgotten password", R"({"vcode_server_status":{"send_vcode_by_sms":true}})", {u"btnForgetPWD"_s}, {});
    row("one-time password", R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})",
        {u"boxVcode"_s, u"txtOTPCode"_s}, {u"btnAutoLogin"_s, u"txtVcode"_s, u"vcodeImage"_s});
    row("code by SMS", R"({"dualfactor_auth_server_status":{"auth_by_sms":true}})", {u"viewNormal"_s},
        {u"btnAutoLogin"_s, u"boxVcode"_s});
    row("picture code later", R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})", {u"viewNormal"_s},
        {u"btnAutoLogin"_s, u"boxVcode"_s});
    row("picture code at once", R"({"vcode_login_config":{"isenable":true,"passwderrcnt":0}})",
        {u"boxVcode"_s, u"txtVcode"_s, u"vcodeImage"_s}, {u"btnAutoLogin"_s, u"txtOTPCode"_s});
    row("single sign-on", R"({"thirdauth":{"config":{}}})", {u"viewThird"_s, u"btnChangeNormalMode"_s},
        {u"viewNormal"_s});
    row("single sign-on only", R"({"thirdauth":{"config":{"hideLogin":true}}})", {u"viewThird"_s},
        {u"viewNormal"_s, u"btnChangeNormalMode"_s});
    row("single sign-on hidden", R"({"thirdauth":{"config":{"hideThirdLogin":true}}})", {u"viewNormal"_s},
        {u"viewThird"_s, u"btnChangeThirdMode"_s});
}

void TestLoginWindow::faces()
{
    QFETCH(QByteArray, info);
    QFETCH(QStringList, shown);
    QFETCH(QStringList, hidden);
    Window scene;
    if (shown.contains(u"vcodeImage"_s))
        scene.server.answerAll(ScriptedAnswer::json(pictureReply));
    scene.show(info);
    for (const QString &name : shown)
        QVERIFY2(Window::shows(scene.window(), name.toLatin1().constData()), qPrintable(name));
    for (const QString &name : hidden)
        QVERIFY2(!Window::shows(scene.window(), name.toLatin1().constData()), qPrintable(name));
    if (shown.contains(u"vcodeImage"_s))
        QVERIFY(scene.server.waitForRequests(2));
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginWindow::switching()
{
    Window scene;
    scene.client.defaults.set(u"authbysms"_s, false);
    scene.remember(u"ann"_s, u"secret"_s, 0);
    scene.show(R"({"thirdauth":{"id":"cas","config":{"loginButtonText":"A&B"}},
        "dualfactor_auth_server_status":{"auth_by_sms":true,"auth_by_email":true}})");
    QWidget *window = scene.window();
    auto *third = Window::find<QAbstractButton>(window, "thirdLoginButton");
    QCOMPARE(third->text(), u"A&&B"_s); // a name, not a shortcut
    QCOMPARE(third->accessibleName(), u"A&B"_s);
    QVERIFY(scene.client.defaults.boolean(u"authbysms"_s));
    QVERIFY(scene.client.defaults.boolean(u"authbyemail"_s));
    Window::press(window, "btnChangeNormalMode");
    QVERIFY(Window::shows(window, "viewNormal"));
    QVERIFY(!Window::shows(window, "viewThird"));
    QVERIFY(!Window::shows(window, "btnAutoLogin"));
    QCOMPARE(Window::text(window, "txtUserName"), u"ann"_s);
    QCOMPARE(Window::text(window, "txtPassword"), u"secret"_s);
    Window::press(window, "btnChangeThirdMode");
    QVERIFY(Window::shows(window, "viewThird"));
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginWindow::codeBoxStays_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::addColumn<bool>("stays");
    const QByteArray picture = R"({"vcode_login_config":{"isenable":true,"passwderrcnt":0}})";
    const QByteArray pictureLater = R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})";
    const QByteArray oneTime = R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})";
    const QByteArray nothing = R"({"vcode_login_config":{"isenable":false}})";
    QTest::newRow("picture still possible") << picture << pictureLater << true;
    QTest::newRow("picture no longer") << picture << nothing << false;
    QTest::newRow("one-time password still") << oneTime << oneTime << true;
    QTest::newRow("one-time password no longer") << oneTime << nothing << false;
}

/// Reading the configuration once more takes no code away that the server has asked for.
void TestLoginWindow::codeBoxStays()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    QFETCH(bool, stays);
    Window scene;
    scene.server.answerAll(ScriptedAnswer::json(pictureReply));
    scene.show(first);
    // Something to tell the second configuration by.
    const QByteArray seen = R"({"vcode_server_status":{"send_vcode_by_sms":true},)";
    const char *field = first.contains("OTP") ? "txtOTPCode" : "txtVcode";
    AWAIT(Window::shows(scene.window(), field));
    QVERIFY(scene.server.waitForRequests(first.contains("OTP") ? 1 : 2));
    Window::type(scene.window(), field, u"12"_s);
    scene.server.expect(configuration, ScriptedAnswer::json(seen + second.mid(1)));
    scene.controller->initialUI();
    AWAIT(Window::shows(scene.window(), "btnForgetPWD"));
    QCOMPARE(Window::shows(scene.window(), field), stays);
    QCOMPARE(Window::text(scene.window(), field), stays ? u"12"_s : QString());
}

void TestLoginWindow::autoLogin_data()
{
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<int>("wanted");
    QTest::addColumn<bool>("needed");
    QTest::addColumn<bool>("submitted");
    QTest::newRow("wanted and asked for") << QByteArray("{}") << 1 << true << true;
    QTest::newRow("not wanted") << QByteArray("{}") << 0 << true << false;
    QTest::newRow("not asked for") << QByteArray("{}") << 1 << false << false;
    QTest::newRow("picture code") << QByteArray(R"({"vcode_login_config":{"isenable":true,"passwderrcnt":5}})") << 1
                                  << true << false;
    QTest::newRow("single sign-on hidden")
        << QByteArray(R"({"thirdauth":{"config":{"hideThirdLogin":true}}})") << 1 << true << true;
    QTest::newRow("single sign-on") << QByteArray(R"({"thirdauth":{"config":{}}})") << 1 << true << false;
}

void TestLoginWindow::autoLogin()
{
    QFETCH(QByteArray, info);
    QFETCH(int, wanted);
    QFETCH(bool, needed);
    QFETCH(bool, submitted);
    Window scene;
    scene.remember(u"ann"_s, u"secret"_s, wanted);
    if (submitted) {
        scene.server.expect(configuration, ScriptedAnswer::json(info));
        scene.server.expect(signInCall, ScriptedAnswer::json(R"({"errcode":401003,"errmsg":"no"})"));
        scene.showAgain(needed);
        QVERIFY(scene.server.waitForRequests(2));
        AWAIT(!Window::message(scene.window(), "txtErrorMessage").isEmpty());
        // A refused password is not tried again by itself, whatever makes the window read the configuration anew.
        scene.server.expect(configuration,
                            ScriptedAnswer::json(R"({"vcode_server_status":{"send_vcode_by_email":true}})"));
        scene.controller->initialUI();
        AWAIT(Window::shows(scene.window(), "btnForgetPWD"));
        QCOMPARE(Window::find<QAbstractButton>(scene.window(), "btnLogin")->text(), u"LoginButtonTitle"_s);
    } else {
        scene.show(info, needed);
    }
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginWindow::remembered()
{
    Window scene;
    scene.client.defaults.set(u"AccountName"_s, u"ann"_s);
    scene.show("{}");
    QWidget *window = scene.window();
    QCOMPARE(Window::text(window, "txtUserName"), u"ann"_s);
    QCOMPARE(Window::text(window, "txtPassword"), QString());
    QVERIFY(!Window::find<QAbstractButton>(window, "btnRememberPassword")->isChecked());
    QVERIFY(!Window::find<QAbstractButton>(window, "btnLogin")->isEnabled());
    QCOMPARE(window->focusWidget(), Window::find(window, "txtPassword"));
}

void TestLoginWindow::checkBoxes()
{
    Window scene;
    scene.show("{}");
    auto *remember = Window::find<QAbstractButton>(scene.window(), "btnRememberPassword");
    auto *automatic = Window::find<QAbstractButton>(scene.window(), "btnAutoLogin");
    automatic->click();
    QVERIFY(remember->isChecked());
    automatic->click();
    QVERIFY(remember->isChecked());
    automatic->click();
    remember->click();
    QVERIFY(!automatic->isChecked());
    remember->click();
    QVERIFY(!automatic->isChecked());
}

void TestLoginWindow::validation()
{
    Window scene;
    scene.show(R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})");
    QWidget *window = scene.window();
    auto *button = Window::find<QAbstractButton>(window, "btnLogin");
    auto *password = Window::find<QLineEdit>(window, "txtPassword");
    for (const char *name : {"txtUserName", "txtPassword", "txtOTPCode"}) {
        QVERIFY2(!button->isEnabled(), name);
        QTest::keyClick(password, Qt::Key_Return);
        Window::type(window, name, u"1"_s);
    }
    QVERIFY(button->isEnabled());
    Window::find<QLineEdit>(window, "txtUserName")->clear();
    QVERIFY(!button->isEnabled());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginWindow::missingConfiguration()
{
    Window scene;
    testing::LogRecorder log;
    scene.server.expect(configuration, ScriptedAnswer::raw("junk"));
    scene.showAgain();
    QWidget *window = scene.window();
    QVERIFY(log.contains(u"The network maybe not connected for the dicAuthInfo is nil."_s));
    QCOMPARE(Window::message(window, "txtErrorMessage"), u"NoServerConfig"_s);
    QVERIFY(!Window::shows(window, "viewNormal"));
    QVERIFY(Window::find(window, "btnServerSetting")->isEnabled());
    Window::press(window, "btnServerSetting");
    QCOMPARE(scene.posted, QStringList{u"NotificationWantServerSettingWindow"_s});

    scene.server.expect(configuration, ScriptedAnswer::json("{}"));
    Window::press(window, "btnRetry");
    AWAIT(Window::shows(window, "viewNormal"));
    QVERIFY(!Window::shows(window, "btnRetry"));
    QCOMPARE(Window::message(window, "txtErrorMessage"), QString());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginWindow::lateConfiguration()
{
    Window scene;
    ScriptedAnswer slow = ScriptedAnswer::json(R"({"thirdauth":{"config":{}}})");
    slow.drip = std::chrono::milliseconds(2);
    scene.server.expect(configuration, slow).expect(configuration, ScriptedAnswer::json("{}"));
    scene.controller->showLoginWindowAutoLoginIfNeeded(false);
    AWAIT(scene.server.requests().size() == 1);
    scene.controller->initialUI();
    AWAIT(Window::shows(scene.window(), "viewNormal"));
    // The first answer needs longer than the client's patience or arrives now; either way it comes too late.
    QTest::qWait(500);
    QVERIFY(Window::shows(scene.window(), "viewNormal"));
    QVERIFY(!Window::shows(scene.window(), "viewThird"));
}

void TestLoginWindow::redirect()
{
    Window scene;
    scene.show(R"({"thirdauth":{"id":"cas","config":{"autoCasRedirect":true,"authServer":"https://sso/?x=1"}}})");
    QCOMPARE(scene.opened, QStringList{u"https://sso/?x=1&platform=mac cas"_s});
    QVERIFY(!scene.controller->isVisible());
}

void TestLoginWindow::thirdLogin_data()
{
    QTest::addColumn<QByteArray>("server");
    QTest::addColumn<bool>("opens");
    QTest::addColumn<QStringList>("opened");
    QTest::addColumn<bool>("stays");
    QTest::newRow("opened") << QByteArray("https://sso") << true << QStringList{u"https://sso?platform=mac 7"_s}
                            << false;
    QTest::newRow("no browser") << QByteArray("https://sso") << false << QStringList{u"https://sso?platform=mac 7"_s}
                                << true;
    QTest::newRow("not a web address") << QByteArray("file:///etc") << true << QStringList() << true;
}

void TestLoginWindow::thirdLogin()
{
    QFETCH(QByteArray, server);
    QFETCH(bool, opens);
    QFETCH(bool, stays);
    Window scene;
    scene.opens = opens;
    scene.show(R"({"thirdauth":{"id":7,"config":{"authServer":")" + server + "\"}}}");
    Window::press(scene.window(), "thirdLoginButton");
    QTEST(scene.opened, "opened");
    QCOMPARE(scene.controller->isVisible(), stays);
    QCOMPARE(Window::message(scene.window(), "txtErrorMessage").isEmpty(), !scene.opened.isEmpty());
}

void TestLoginWindow::forgottenPassword_data()
{
    QTest::addColumn<bool>("up");
    QTest::newRow("reachable") << true;
    QTest::newRow("unreachable") << false;
}

void TestLoginWindow::forgottenPassword()
{
    QFETCH(bool, up);
    Window scene;
    scene.show(R"({"vcode_server_status":{"send_vcode_by_email":true}})");
    if (up)
        scene.server.expect("POST /api/v1/ping", ScriptedAnswer::json("{}"))
            .expect("POST /api/v1/ping", ScriptedAnswer::json("{}"));
    else
        scene.server.stop();
    Window::press(scene.window(), "btnForgetPWD");
    Window::press(scene.window(), "btnForgetPWD");
    AWAIT(!scene.posted.isEmpty() || Window::alert());
    QCOMPARE(scene.posted, up ? QStringList{u"NotificationWantForgetPWDWindow"_s} : QStringList());
    QCOMPARE(Window::alert() != nullptr, !up);
    if (!up)
        Window::alert()->close();
    QCOMPARE(scene.server.complaint(), QString());
}

void TestLoginWindow::closing()
{
    Window scene;
    scene.show("{}");
    scene.window()->close();
    QCOMPARE(scene.terminated, 1);
}

void TestLoginWindow::focusColours()
{
    Window scene;
    scene.show("{}");
    const auto colour = [&](const char *box) {
        return Window::find(scene.window(), box)->property("borderColor").value<QColor>();
    };
    struct Case {
        int tag;
        const char *box;
    };
    for (const Case &each : {Case{111, "boxUser"}, {113, "boxPasswords"}, {112, "boxVcode"}, {114, "boxVcode"}}) {
        const QVariantMap tag{{u"tag"_s, each.tag}};
        scene.center.post(NotificationNames::passwordsActive(), {}, tag);
        QCOMPARE(colour(each.box), QColor(0xDD, 0x33, 0x33));
        scene.center.post(NotificationNames::passwordsDeactive(), {}, tag);
        QVERIFY(qAbs(colour(each.box).alphaF() - 0.42F) < 0.01F);
        scene.center.post(NotificationNames::userActive(), {}, tag);
        QCOMPARE(colour(each.box), QColor(0xDD, 0x33, 0x33));
        scene.center.post(NotificationNames::userDeactive(), {}, tag);
        QVERIFY(qAbs(colour(each.box).alphaF() - 0.42F) < 0.01F);
    }
}

REGISTER_TEST(TestLoginWindow)
#include "TestLoginWindow.moc"
