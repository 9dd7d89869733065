#include "LoginScene.h"
#include "login/ServerSettingWindowController.h"
#include "support/Cases.h"
#include "support/TestMain.h"

#include <QFile>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
const QByteArray check = "POST /api/v1/update?method=check";

/// The window for a server that speaks plain HTTP; TLS is answered with a 400 before the script is asked.
struct Settings : LoginScene, ShowUpdateVersionDelegate {
    Settings() { controller->setShowUpdateVersionDelegate(this); }
    void showUpdateVersionWindow(bool settingsShow) override { updatesAsked += settingsShow ? 1 : 100; }

    void storeServer()
    {
        client.defaults.set(u"ServerID"_s, u"127.0.0.1"_s);
        client.defaults.set(u"AuthportNew"_s, server.portText());
    }
    void show(int code = 0)
    {
        controller->showServerSettingWindowWithCode(code);
        QVERIFY(controller->isVisible());
    }
    /// Shows the window with the server's address typed in, for a check that gets `answer`.
    void fillIn(const QByteArray &answer = "{}")
    {
        show();
        server.expect(pingCall, ScriptedAnswer::json("{}")).expect(check, ScriptedAnswer::json(answer));
        type(window(), "txtServerAddress", u"127.0.0.1"_s);
        type(window(), "txtAuthPort", server.portText());
    }
    QWidget *window() { return controller->window(); }
    QString message() { return LoginScene::message(window(), "txtMessage"); }
    bool idle() { return !title(window(), "btnConfirm").isEmpty(); }
    bool canConfirm() { return isEnabled(window(), "btnConfirm"); }
    bool ended() { return !posted.isEmpty() || terminated > 0; }

    int updatesAsked = 0;
    std::unique_ptr<ServerSettingWindowController> controller =
        std::make_unique<ServerSettingWindowController>(client.networking, client.defaults, center);
};

struct Prefill {
    const char *name;
    QString stored;
    QByteArray preset;
    QString expected;
};

const QList<Prefill> prefills{
    {"stored", u"docs.example"_s, "preset.example", u"docs.example"_s},
    {"preset", {}, "preset.example", u"preset.example"_s},
    {"stored empty", u""_s, "preset.example", {}},
    {"neither", {}, "", {}},
};

struct Check {
    const char *name;
    QByteArray answer;
    QString line;
    int updates;
    bool finished;
};

const QList<Check> checks{
    {"ok", R"({"result":"ok"})", {}, 0, true},
    {"no result", "{}", {}, 0, true},
    {"400003, whatever comes with it", R"({"errcode":400003,"errmsg":"none","result":"force"})", {}, 0, true},
    {"another version", R"({"result":"force"})", {}, 1, false},
    {"result of another type", R"({"result":3})", {}, 1, false},
    {"400002", R"({"errcode":400002,"errmsg":"?"})", u"ServerConfigIllegalParameter"_s, 0, false},
    {"another error", R"({"errcode":500001,"errmsg":"said"})", u"said"_s, 0, false},
};

struct Leaving {
    const char *name;
    bool byClosing;
    bool up;
    QVariant hideLogin;
    bool quits;
};

const QList<Leaving> leavings{
    {"cancel, server up", false, true, 1, false},        {"cancel, server down", false, false, {}, true},
    {"close, server up", true, true, {}, false},         {"close, server down", true, false, {}, true},
    {"close, login hidden", true, true, 1, true},        {"close, login not hidden", true, true, 0, false},
    {"close, login hidden twice", true, true, 2, false},
};

struct End {
    const char *name;
    void (*begin)(Settings &scene);
    bool whenTold = false; ///< to show the login window
};

const QList<End> ends{
    {"while checking", [](Settings &scene) { scene.controller->performConfirm(); }},
    {"while cancelling", [](Settings &scene) { scene.controller->performCancel(); }},
    {"while closing", [](Settings &scene) { scene.window()->close(); }},
    {"when told to show the login window", [](Settings &scene) { scene.window()->close(); }, true},
};
} // namespace

/// The window that names the server.
class TestServerSettingWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void prefill_data() { testing::addCases(prefills); }
    void prefill()
    {
        const auto &[name, stored, preset, expected] = testing::currentCase(prefills);
        Settings scene;
        QFile file(scene.client.folder.filePath(u"QBOEM.plist"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("<plist version=\"1.0\"><dict><key>IPAddress</key><string>" + preset + "</string></dict></plist>");
        file.close();
        if (!stored.isNull())
            scene.client.defaults.set(u"ServerID"_s, stored);
        ServerSettingWindowController controller(scene.client.networking, scene.client.defaults, scene.center,
                                                 Branding(file.fileName()));
        controller.showServerSettingWindowWithCode(0);
        QCOMPARE(Settings::text(controller.window(), "txtAuthPort"), QString());
        QCOMPARE(Settings::text(controller.window(), "txtServerAddress"), expected);
    }

    void typing()
    {
        Settings scene;
        scene.client.defaults.set(u"AuthportNew"_s, u"old port"_s);
        scene.show();
        QWidget *window = scene.window();
        auto *port = Settings::find<QLineEdit>(window, "txtAuthPort");
        QCOMPARE(port->text(), u"old port"_s);
        port->setFocus();
        QTest::keyClick(port, Qt::Key_Backspace);
        QTest::keyClicks(port, u"7"_s);
        QCOMPARE(port->text(), u"old por"_s);
        Settings::type(window, "txtAuthPort", u"6x5-5 365"_s); // 65536 is one too many
        QCOMPARE(port->text(), u"65535"_s);
        QVERIFY(!scene.canConfirm());
        Settings::type(window, "txtServerAddress", u"ab"_s);
        QVERIFY(!scene.canConfirm());
        QTest::keyClicks(Settings::find(window, "txtServerAddress"), u"c"_s);
        QVERIFY(scene.canConfirm());
        Settings::type(window, "txtAuthPort", u"0"_s);
        QVERIFY(!scene.canConfirm());
        QTest::keyClick(port, Qt::Key_Return);
        QVERIFY(scene.idle());
    }

    void openingMessages()
    {
        Settings scene;
        for (const int code : {0, 1, 7, 2}) {
            scene.show(code);
            QCOMPARE(scene.message(), code == 2 ? u"ServerConfigFailed"_s : QString());
        }
        scene.controller->DisplayServerSettingWindow(u"<b>from the server"_s);
        AWAIT(scene.message() == u"<b>from the server"_s);
        scene.controller->showMessageWithErrorLocalizedDescription({});
        QCOMPARE(scene.message(), u"<b>from the server"_s);
    }

    void refusedAddresses_data()
    {
        QTest::addColumn<QString>("expected");
        QTest::newRow("10.0.0.256") << u"InputIPError"_s;
        QTest::newRow("files_host") << u"InputDomainError"_s;
    }
    void refusedAddresses()
    {
        Settings scene;
        scene.show();
        Settings::type(scene.window(), "txtServerAddress", QString::fromLatin1(QTest::currentDataTag()));
        Settings::type(scene.window(), "txtAuthPort", u"443"_s);
        Settings::pressKey(scene.window(), "txtAuthPort", Qt::Key_Enter);
        QTEST(scene.message(), "expected");
        QVERIFY(scene.idle());
        QVERIFY(!scene.client.defaults.contains(u"ServerID"_s));
    }

    void confirm_data() { testing::addCases(checks); }
    void confirm()
    {
        const auto &[name, answer, line, updates, finished] = testing::currentCase(checks);
        Settings scene;
        scene.fillIn(answer);
        Settings::pressKey(scene.window(), "txtServerAddress", Qt::Key_Return);
        QCOMPARE(scene.message(), u"ServerConfigChecking"_s);
        QVERIFY(Settings::isEnabled(scene.window(), "btnCancel"));
        AWAIT(scene.idle());
        QCOMPARE(scene.message(), line);
        QCOMPARE(scene.updatesAsked, updates);
        QCOMPARE(!scene.posted.isEmpty(), finished);
        QVERIFY(scene.controller->isVisible());
        QCOMPARE(scene.terminated, 0);
        QCOMPARE(scene.client.defaults.string(u"ServerID"_s), u"127.0.0.1"_s);
        QCOMPARE(scene.client.defaults.string(u"AuthportNew"_s), scene.server.portText());
        QVERIFY(scene.client.networking.dicUpdateVersion());
    }

    void unreachable()
    {
        Settings scene;
        scene.fillIn();
        scene.server.stop();
        scene.isServerLost = true;
        Settings::press(scene.window(), "btnConfirm");
        AWAIT(scene.idle());
        QCOMPARE(scene.message(), u"ServerConfigFailed"_s);
        QVERIFY(scene.canConfirm());
        QVERIFY(!scene.client.defaults.contains(u"ServerID"_s));
        QVERIFY(!scene.ended());
    }

    /// The answer to a check from before the window was shown anew concerns nobody.
    void lateAnswer()
    {
        Settings scene;
        scene.show();
        scene.server.expect(pingCall, ScriptedAnswer::json("{}"));
        Settings::type(scene.window(), "txtServerAddress", u"127.0.0.1"_s);
        Settings::type(scene.window(), "txtAuthPort", scene.server.portText());
        Settings::press(scene.window(), "btnConfirm");
        scene.show();
        QVERIFY(scene.idle());
        QVERIFY(scene.server.waitForRequests(1));
        QTest::qWait(100); // what is still queued for the window must find nobody
        QVERIFY(!scene.client.defaults.contains(u"ServerID"_s) && !scene.ended());
    }

    /// Confirmed once, whatever is pressed; and a configuration that was fetched clears the mark.
    void necessary()
    {
        Settings scene;
        scene.controller->setNecessary(true);
        scene.controller->performDisappear();
        QCOMPARE(scene.terminated, 1);
        QCOMPARE(scene.posted, QStringList());
        scene.fillIn();
        Settings::pressTwice(scene.window(), "btnConfirm");
        scene.controller->performConfirm();
        Settings::pressKey(scene.window(), "txtServerAddress", Qt::Key_9);
        AWAIT(scene.idle());
        QCOMPARE(scene.terminated, 1);
        QCOMPARE(scene.posted, QStringList{u"NotificationWantLoginWindow"_s});
        QCOMPARE(scene.client.defaults.string(u"ServerID"_s), u"127.0.0.1"_s);
    }

    void leaving_data() { testing::addCases(leavings); }
    void leaving()
    {
        const auto &[name, byClosing, up, hideLogin, quits] = testing::currentCase(leavings);
        Settings scene;
        scene.storeServer();
        if (hideLogin.isValid()) {
            const QVariantMap thirdauth{{u"config"_s, QVariantMap{{u"hideLogin"_s, hideLogin}}}};
            scene.client.defaults.set(u"ThirdPartyDic"_s, QVariantMap{{u"thirdauth"_s, thirdauth}});
        }
        scene.show();
        if (up)
            scene.server.expect(byClosing ? "POST /v1/ping" : pingCall,
                                ScriptedAnswer::json(R"({"errcode":404001})", 404));
        else
            scene.server.stop();
        if (byClosing) {
            scene.window()->close();
            QVERIFY(scene.controller->isVisible());
            scene.window()->close();
        } else {
            QTest::keyClick(scene.window(), Qt::Key_Escape);
            scene.controller->performCancel();
        }
        QVERIFY(!Settings::isEnabled(scene.window(), "btnCancel"));
        AWAIT(scene.ended());
        QCOMPARE(scene.terminated, quits ? 1 : 0);
        QCOMPARE(scene.posted, quits ? QStringList() : QStringList{u"NotificationWantLoginWindow"_s});
        QCOMPARE(scene.controller->isVisible(), !byClosing);
    }

    void leavingWithoutServer()
    {
        for (const QString &missing : {u"ServerID"_s, u"AuthportNew"_s}) {
            Settings scene;
            scene.storeServer();
            scene.client.defaults.set(missing, u""_s);
            scene.show();
            scene.controller->performCancel();
            QCOMPARE(scene.terminated, 1);
            scene.window()->close();
            QCOMPARE(scene.terminated, 2);
            QVERIFY(!scene.controller->isVisible());
        }
    }

    void gone_data() { testing::addCases(ends); }
    void gone()
    {
        const auto &[name, begin, whenTold] = testing::currentCase(ends);
        Settings scene;
        scene.storeServer();
        scene.show();
        scene.server.answerAll(ScriptedAnswer::json("{}"));
        begin(scene);
        if (whenTold)
            scene.whenPosted = [&scene] { scene.controller.reset(); };
        else
            scene.controller.reset();
        QVERIFY(scene.server.waitForRequests(1));
        AWAIT(!scene.controller);
        QTest::qWait(50); // what is still queued for the window must find nobody
        QCOMPARE(scene.posted.size(), whenTold ? 1 : 0);
        QCOMPARE(scene.terminated, 0);
    }

    void focusColours()
    {
        Settings scene;
        scene.show();
        const char *const boxes[] = {"boxServerAddress", "boxAuthPort"};
        for (int tag : {1, 2}) {
            const char *box = boxes[tag - 1];
            scene.center.post(NotificationNames::serverSettingTextFieldActive(), {}, {{u"Active"_s, tag}});
            QCOMPARE(Settings::border(scene.window(), box), QColor(0xDD, 0x33, 0x33));
            scene.center.post(NotificationNames::serverSettingTextFieldDeactive(), {}, {{u"Deactive"_s, tag}});
            QVERIFY(Settings::border(scene.window(), box) != QColor(0xDD, 0x33, 0x33));
        }
    }
};

REGISTER_TEST(TestServerSettingWindow)
#include "TestServerSettingWindow.moc"
