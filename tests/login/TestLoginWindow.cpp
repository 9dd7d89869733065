#include "LoginScene.h"
#include "login/LoginWindowController.h"
#include "support/Cases.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
const QByteArray pictureAtOnce = R"({"vcode_login_config":{"isenable":true,"passwderrcnt":0}})";
const QByteArray pictureLater = R"({"vcode_login_config":{"isenable":true,"passwderrcnt":3}})";
const QByteArray noPicture = R"({"vcode_login_config":{"isenable":false}})";
const QByteArray oneTime = R"({"dualfactor_auth_server_status":{"auth_by_OTP":true}})";
const QByteArray singleSignOn = R"({"thirdauth":{"config":{}}})";
const QByteArray namedSingleSignOn = R"({"thirdauth":{"id":"cas","config":{"loginButtonText":"A&B"}},
    "dualfactor_auth_server_status":{"auth_by_sms":true,"auth_by_email":true}})";
const QByteArray redirecting =
    R"({"thirdauth":{"id":"cas","config":{"autoCasRedirect":true,"authServer":"https://sso/?x=1"}}})";
const QByteArray singleSignOnHidden = R"({"thirdauth":{"config":{"hideThirdLogin":true}}})";

struct Window : LoginScene {
    void show(const QByteArray &info, bool autoLogin = false)
    {
        server.expect(configurationCall, ScriptedAnswer::json(info));
        showAgain(autoLogin);
    }
    void showAgain(bool autoLogin = false)
    {
        controller->showLoginWindowAutoLoginIfNeeded(autoLogin);
        QTRY_VERIFY(controller->isVisible());
        QTRY_VERIFY(!shows("waitingIndicatorPlace"));
    }
    QWidget *window() { return controller->window(); }
    bool shows(const char *name) { return LoginScene::shows(window(), name); }
    QString error() { return message(window(), "txtErrorMessage"); }
    void remember(int autoLogin)
    {
        client.defaults.set(u"AccountName"_s, u"ann"_s);
        client.defaults.set(u"EncryptPassword"_s, u"c2VjcmV0"_s);
        client.defaults.set(u"AutoLogin"_s, autoLogin);
    }

    std::unique_ptr<LoginWindowController> controller =
        std::make_unique<LoginWindowController>(client.networking, client.defaults, center, *this);
};

struct FaceCase {
    const char *name;
    QByteArray info;
    QByteArrayList shown;
    QByteArrayList hidden;
};

const QList<FaceCase> faceCases{
    {"plain",
     "{}",
     {"viewNormal", "btnAutoLogin"},
     {"viewThird", "viewWaiting", "btnForgetPWD", "btnChangeThirdMode", "boxVcode", "btnRetry"}},
    {"forgotten password", R"({"vcode_server_status":{"send_vcode_by_sms":true}})", {"btnForgetPWD"}, {}},
    {"one-time password", oneTime, {"boxVcode", "txtOTPCode"}, {"btnAutoLogin", "txtVcode", "vcodeImage"}},
    {"picture code later", pictureLater, {"viewNormal"}, {"btnAutoLogin", "boxVcode"}},
    {"picture code at once", pictureAtOnce, {"boxVcode", "txtVcode", "vcodeImage"}, {"btnAutoLogin", "txtOTPCode"}},
    {"single sign-on", singleSignOn, {"viewThird", "btnChangeNormalMode"}, {"viewNormal"}},
    {"single sign-on only",
     R"({"thirdauth":{"config":{"hideLogin":true}}})",
     {"viewThird"},
     {"viewNormal", "btnChangeNormalMode"}},
    {"single sign-on hidden", singleSignOnHidden, {"viewNormal"}, {"viewThird", "btnChangeThirdMode"}},
};

struct Reading {
    const char *name;
    QByteArray first;
    QByteArray second;
    const char *field;
    bool stays;
};

const QList<Reading> readings{
    {"picture still possible", pictureAtOnce, pictureLater, "txtVcode", true},
    {"picture no longer", pictureAtOnce, noPicture, "txtVcode", false},
    {"one-time password still", oneTime, oneTime, "txtOTPCode", true},
    {"one-time password no longer", oneTime, noPicture, "txtOTPCode", false},
};

struct AutoLogin {
    const char *name;
    QByteArray info;
    int wanted;
    bool needed;
    bool submitted;
};

const QList<AutoLogin> autoLogins{
    {"wanted and asked for", "{}", 1, true, true},
    {"not wanted", "{}", 0, true, false},
    {"not asked for", "{}", 1, false, false},
    {"picture code", pictureLater, 1, true, false},
    {"single sign-on hidden", singleSignOnHidden, 1, true, true},
    {"single sign-on", singleSignOn, 1, true, false},
};

struct ThirdLogin {
    const char *name;
    QByteArray info;
    bool opens;
    QStringList opened;
    bool stays;
};

const QByteArray authenticator = R"({"thirdauth":{"id":7,"config":{"authServer":"https://sso"}}})";
const QList<ThirdLogin> thirdLogins{
    {"opened", authenticator, true, {u"https://sso?platform=mac 7"_s}, false},
    {"no browser", authenticator, false, {u"https://sso?platform=mac 7"_s}, true},
    {"not a web address", R"({"thirdauth":{"id":7,"config":{"authServer":"file:///etc"}}})", true, {}, true},
};
} // namespace

/// The faces of the login window and what leads away from it.
class TestLoginWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void faces_data() { testing::addCases(faceCases); }
    void faces()
    {
        const auto &[label, info, shown, hidden] = testing::currentCase(faceCases);
        const bool hasPicture = shown.contains("vcodeImage");
        Window scene;
        if (hasPicture)
            scene.server.answerAll(ScriptedAnswer::json(R"({"uuid":"u1","vcode":""})"));
        scene.show(info);
        for (const QByteArray &name : shown)
            QVERIFY2(scene.shows(name.constData()), name.constData());
        for (const QByteArray &name : hidden)
            QVERIFY2(!scene.shows(name.constData()), name.constData());
        QVERIFY(scene.server.waitForRequests(hasPicture ? 2 : 1));
    }

    void switching()
    {
        Window scene;
        scene.client.defaults.set(u"authbysms"_s, false);
        scene.remember(0);
        scene.show(namedSingleSignOn);
        QWidget *window = scene.window();
        QCOMPARE(Window::title(window, "thirdLoginButton"), u"A&&B"_s); // a name, not a shortcut
        QCOMPARE(Window::find(window, "thirdLoginButton")->accessibleName(), u"A&B"_s);
        QVERIFY(scene.client.defaults.boolean(u"authbysms"_s));
        QVERIFY(scene.client.defaults.boolean(u"authbyemail"_s));
        Window::press(window, "btnChangeNormalMode");
        QVERIFY(scene.shows("viewNormal") && !scene.shows("viewThird") && !scene.shows("btnAutoLogin"));
        QCOMPARE(Window::text(window, "txtUserName"), u"ann"_s);
        QCOMPARE(Window::text(window, "txtPassword"), u"secret"_s);
        Window::press(window, "btnChangeThirdMode");
        QVERIFY(scene.shows("viewThird"));
    }

    /// Reading the configuration once more takes no code away that the server has asked for.
    void codeBoxStays_data() { testing::addCases(readings); }
    void codeBoxStays()
    {
        const auto &[name, first, second, field, stays] = testing::currentCase(readings);
        Window scene;
        scene.server.answerAll(ScriptedAnswer::json(R"({"uuid":"u1","vcode":""})"));
        scene.show(first);
        AWAIT(scene.shows(field));
        QVERIFY(scene.server.waitForRequests(first == oneTime ? 1 : 2));
        Window::type(scene.window(), field, u"12"_s);
        // Something to tell the second configuration by.
        const QByteArray forgotten = "\"vcode_server_status\":{\"send_vcode_by_sms\":true}";
        scene.server.expect(configurationCall, ScriptedAnswer::json("{" + forgotten + "," + second.mid(1)));
        scene.controller->initialUI();
        AWAIT(scene.shows("btnForgetPWD"));
        QCOMPARE(scene.shows(field), stays);
        QCOMPARE(Window::text(scene.window(), field), stays ? u"12"_s : QString());
    }

    void autoLogin_data() { testing::addCases(autoLogins); }
    void autoLogin()
    {
        const auto &[name, info, wanted, needed, submitted] = testing::currentCase(autoLogins);
        Window scene;
        scene.remember(wanted);
        scene.server.expect(configurationCall, ScriptedAnswer::json(info));
        if (submitted)
            scene.server.expect(signInCall, ScriptedAnswer::json(R"({"errcode":401003,"errmsg":"no"})"));
        scene.showAgain(needed);
        if (submitted) {
            QVERIFY(scene.server.waitForRequests(2));
            AWAIT(!scene.error().isEmpty());
            // A refused password is not tried again by itself, whatever makes the window read the configuration anew.
            scene.server.expect(configurationCall,
                                ScriptedAnswer::json(R"({"vcode_server_status":{"send_vcode_by_email":true}})"));
            scene.controller->initialUI();
            AWAIT(scene.shows("btnForgetPWD"));
            QCOMPARE(Window::title(scene.window(), "btnLogin"), u"LoginButtonTitle"_s);
        }
    }

    void remembered()
    {
        Window scene;
        scene.client.defaults.set(u"AccountName"_s, u"ann"_s);
        scene.show("{}");
        QWidget *window = scene.window();
        QCOMPARE(Window::text(window, "txtUserName"), u"ann"_s);
        QCOMPARE(Window::text(window, "txtPassword"), QString());
        QVERIFY(!Window::find<QAbstractButton>(window, "btnRememberPassword")->isChecked());
        QVERIFY(!Window::isEnabled(window, "btnLogin"));
        QCOMPARE(window->focusWidget(), Window::find(window, "txtPassword"));
    }

    void checkBoxes()
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

    void validation()
    {
        Window scene;
        scene.show(oneTime);
        QWidget *window = scene.window();
        for (const char *name : {"txtUserName", "txtPassword", "txtOTPCode"}) {
            QVERIFY2(!Window::isEnabled(window, "btnLogin"), name);
            Window::pressKey(window, "txtPassword", Qt::Key_Return);
            Window::type(window, name, u"1"_s);
        }
        QVERIFY(Window::isEnabled(window, "btnLogin"));
        Window::find<QLineEdit>(window, "txtUserName")->clear();
        QVERIFY(!Window::isEnabled(window, "btnLogin"));
    }

    void missingConfiguration()
    {
        Window scene;
        testing::LogRecorder log;
        scene.server.expect(configurationCall, ScriptedAnswer::raw("junk"));
        scene.showAgain();
        QVERIFY(log.contains(u"The network maybe not connected for the dicAuthInfo is nil."_s));
        QCOMPARE(scene.error(), u"NoServerConfig"_s);
        QVERIFY(!scene.shows("viewNormal"));
        QVERIFY(Window::isEnabled(scene.window(), "btnServerSetting"));
        Window::press(scene.window(), "btnServerSetting");
        QCOMPARE(scene.posted, QStringList{u"NotificationWantServerSettingWindow"_s});

        scene.server.expect(configurationCall, ScriptedAnswer::json("{}"));
        Window::press(scene.window(), "btnRetry");
        AWAIT(scene.shows("viewNormal"));
        QVERIFY(!scene.shows("btnRetry"));
        QCOMPARE(scene.error(), QString());
    }

    void lateConfiguration()
    {
        Window scene;
        ScriptedAnswer slow = ScriptedAnswer::json(singleSignOn);
        slow.drip = std::chrono::milliseconds(2);
        scene.server.expect(configurationCall, slow).expect(configurationCall, ScriptedAnswer::json("{}"));
        scene.controller->showLoginWindowAutoLoginIfNeeded(false);
        AWAIT(scene.server.requests().size() == 1);
        scene.controller->initialUI();
        AWAIT(scene.shows("viewNormal"));
        // The first answer needs longer than the client's patience or arrives now; either way it comes too late.
        QTest::qWait(500);
        QVERIFY(scene.shows("viewNormal") && !scene.shows("viewThird"));
    }

    void redirect()
    {
        Window scene;
        scene.show(redirecting);
        QCOMPARE(scene.opened, QStringList{u"https://sso/?x=1&platform=mac cas"_s});
        QVERIFY(!scene.controller->isVisible());
    }

    void thirdLogin_data() { testing::addCases(thirdLogins); }
    void thirdLogin()
    {
        const auto &[name, info, opens, opened, stays] = testing::currentCase(thirdLogins);
        Window scene;
        scene.opens = opens;
        scene.show(info);
        Window::press(scene.window(), "thirdLoginButton");
        QCOMPARE(scene.opened, opened);
        QCOMPARE(scene.controller->isVisible(), stays);
        QCOMPARE(scene.error().isEmpty(), !opened.isEmpty());
    }

    void forgottenPassword_data()
    {
        QTest::addColumn<bool>("up");
        QTest::newRow("reachable") << true;
        QTest::newRow("unreachable") << false;
    }
    void forgottenPassword()
    {
        QFETCH(bool, up);
        Window scene;
        scene.show(R"({"vcode_server_status":{"send_vcode_by_email":true}})");
        if (up)
            scene.server.expect(pingCall, ScriptedAnswer::json("{}")).expect(pingCall, ScriptedAnswer::json("{}"));
        else
            scene.server.stop();
        Window::pressTwice(scene.window(), "btnForgetPWD");
        AWAIT(!scene.posted.isEmpty() || Window::alert());
        QCOMPARE(scene.posted, up ? QStringList{u"NotificationWantForgetPWDWindow"_s} : QStringList());
        QCOMPARE(Window::alert() != nullptr, !up);
        if (!up)
            Window::alert()->close();
    }

    void closing()
    {
        Window scene;
        scene.show("{}");
        scene.window()->close();
        QCOMPARE(scene.terminated, 1);
    }

    void focusColours()
    {
        Window scene;
        scene.show("{}");
        const std::pair<QString, QString> pairs[] = {
            {NotificationNames::passwordsActive(), NotificationNames::passwordsDeactive()},
            {NotificationNames::userActive(), NotificationNames::userDeactive()}};
        const std::pair<int, const char *> boxes[] = {
            {111, "boxUser"}, {113, "boxPasswords"}, {112, "boxVcode"}, {114, "boxVcode"}};
        for (const auto &[tag, box] : boxes)
            for (const auto &[active, inactive] : pairs) {
                scene.center.post(active, {}, {{u"tag"_s, tag}});
                QCOMPARE(Window::border(scene.window(), box), QColor(0xDD, 0x33, 0x33));
                scene.center.post(inactive, {}, {{u"tag"_s, tag}});
                QVERIFY(qAbs(Window::border(scene.window(), box).alphaF() - 0.42F) < 0.01F);
            }
    }
};

REGISTER_TEST(TestLoginWindow)
#include "TestLoginWindow.moc"
