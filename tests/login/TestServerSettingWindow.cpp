#include "LoginScene.h"
#include "login/ServerSettingWindowController.h"
#include "support/TestMain.h"

#include <QFile>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
const QByteArray ping = "POST /api/v1/ping";
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
    QWidget *window() { return controller->window(); }
    QString message() { return LoginScene::message(window(), "txtMessage"); }
    bool idle() { return !find<QAbstractButton>(window(), "btnConfirm")->text().isEmpty(); }
    bool ended() { return !posted.isEmpty() || terminated > 0; }

    int updatesAsked = 0;
    std::unique_ptr<ServerSettingWindowController> controller =
        std::make_unique<ServerSettingWindowController>(client.networking, client.defaults, center);
};
} // namespace

/// The window that names the server.
class TestServerSettingWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void prefill_data();
    void prefill();
    void typing();
    void openingMessages_data();
    void openingMessages();
    void refusedAddresses_data();
    void refusedAddresses();
    void confirm_data();
    void confirm();
    void unreachable();
    void confirmedOnce();
    void necessary();
    void leaving_data();
    void leaving();
    void leavingWithoutServer_data();
    void leavingWithoutServer();
    void gone_data();
    void gone();
    void focusColours();
};

void TestServerSettingWindow::prefill_data()
{
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("preset");
    QTest::addColumn<QString>("expected");
    QTest::newRow("stored") << u"docs.example"_s << u"preset.example"_s << u"docs.example"_s;
    QTest::newRow("preset") << QString() << u"preset.example"_s << u"preset.example"_s;
    QTest::newRow("stored empty") << u""_s << u"preset.example"_s << QString();
    QTest::newRow("neither") << QString() << u""_s << QString();
}

void TestServerSettingWindow::prefill()
{
    QFETCH(QString, stored);
    QFETCH(QString, preset);
    Settings scene;
    const QString path = scene.client.folder.filePath(u"QBOEM.plist"_s);
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<plist version=\"1.0\"><dict><key>IPAddress</key><string>" + preset.toUtf8() +
               "</string></dict></plist>");
    file.close();
    if (!stored.isNull())
        scene.client.defaults.set(u"ServerID"_s, stored);
    ServerSettingWindowController controller(scene.client.networking, scene.client.defaults, scene.center,
                                             Branding(path));
    controller.showServerSettingWindowWithCode(0);
    QCOMPARE(Settings::text(controller.window(), "txtAuthPort"), QString());
    QTEST(Settings::text(controller.window(), "txtServerAddress"), "expected");
}

void TestServerSettingWindow::typing()
{
    Settings scene;
    scene.client.defaults.set(u"AuthportNew"_s, u"old port"_s);
    scene.show();
    QWidget *window = scene.window();
    auto *port = Settings::find<QLineEdit>(window, "txtAuthPort");
    auto *confirm = Settings::find<QAbstractButton>(window, "btnConfirm");
    QCOMPARE(port->text(), u"old port"_s);
    port->setFocus();
    QTest::keyClick(port, Qt::Key_Backspace);
    QTest::keyClicks(port, u"7"_s);
    QCOMPARE(port->text(), u"old por"_s);
    Settings::type(window, "txtAuthPort", u"6x5-5 3"_s);
    QCOMPARE(port->text(), u"6553"_s);
    QTest::keyClicks(port, u"6"_s);
    QCOMPARE(port->text(), u"6553"_s);
    QTest::keyClicks(port, u"5"_s);
    QCOMPARE(port->text(), u"65535"_s);
    QVERIFY(!confirm->isEnabled());
    Settings::type(window, "txtServerAddress", u"ab"_s);
    QVERIFY(!confirm->isEnabled());
    QTest::keyClicks(Settings::find(window, "txtServerAddress"), u"c"_s);
    QVERIFY(confirm->isEnabled());
    Settings::type(window, "txtAuthPort", u"0"_s);
    QVERIFY(!confirm->isEnabled());
    QTest::keyClick(port, Qt::Key_Return);
    QVERIFY(scene.idle());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestServerSettingWindow::openingMessages_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("expected");
    QTest::newRow("0") << 0 << QString();
    QTest::newRow("1") << 1 << QString();
    QTest::newRow("2") << 2 << u"ServerConfigFailed"_s;
    QTest::newRow("7") << 7 << QString();
}

void TestServerSettingWindow::openingMessages()
{
    QFETCH(int, code);
    Settings scene;
    scene.show(code);
    QTEST(scene.message(), "expected");
    scene.controller->DisplayServerSettingWindow(u"<b>from the server"_s);
    AWAIT(scene.message() == u"<b>from the server"_s);
    scene.controller->showMessageWithErrorLocalizedDescription({});
    QCOMPARE(scene.message(), u"<b>from the server"_s);
}

void TestServerSettingWindow::refusedAddresses_data()
{
    QTest::addColumn<QString>("expected");
    QTest::newRow("10.0.0.256") << u"InputIPError"_s;
    QTest::newRow("files_host") << u"InputDomainError"_s;
}

void TestServerSettingWindow::refusedAddresses()
{
    Settings scene;
    scene.show();
    Settings::type(scene.window(), "txtServerAddress", QString::fromLatin1(QTest::currentDataTag()));
    Settings::type(scene.window(), "txtAuthPort", u"443"_s);
    QTest::keyClick(Settings::find(scene.window(), "txtAuthPort"), Qt::Key_Enter);
    QTEST(scene.message(), "expected");
    QVERIFY(scene.idle());
    QVERIFY(!scene.client.defaults.contains(u"ServerID"_s));
}

void TestServerSettingWindow::confirm_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<QString>("line");
    QTest::addColumn<int>("updates");
    QTest::addColumn<bool>("finished");
    QTest::newRow("ok") << QByteArray(R"({"result":"ok"})") << QString() << 0 << true;
    QTest::newRow("no result") << QByteArray("{}") << QString() << 0 << true;
    QTest::newRow("400003") << QByteArray(R"({"errcode":400003,"errmsg":"none"})") << QString() << 0 << true;
    QTest::newRow("another version") << QByteArray(R"({"result":"force"})") << QString() << 1 << false;
    QTest::newRow("400002") << QByteArray(R"({"errcode":400002,"errmsg":"?"})") << u"ServerConfigIllegalParameter"_s
                            << 0 << false;
    QTest::newRow("another error") << QByteArray(R"({"errcode":500001,"errmsg":"said"})") << u"said"_s << 0 << false;
}

void TestServerSettingWindow::confirm()
{
    QFETCH(QByteArray, answer);
    Settings scene;
    scene.show();
    scene.server.expect(ping, ScriptedAnswer::json("{}")).expect(check, ScriptedAnswer::json(answer));
    Settings::type(scene.window(), "txtServerAddress", u"127.0.0.1"_s);
    Settings::type(scene.window(), "txtAuthPort", scene.server.portText());
    QTest::keyClick(Settings::find(scene.window(), "txtServerAddress"), Qt::Key_Return);
    QCOMPARE(scene.message(), u"ServerConfigChecking"_s);
    AWAIT(scene.idle());
    QTEST(scene.message(), "line");
    QTEST(scene.updatesAsked, "updates");
    QTEST(!scene.posted.isEmpty(), "finished");
    QVERIFY(scene.controller->isVisible());
    QCOMPARE(scene.terminated, 0);
    QCOMPARE(scene.client.defaults.string(u"ServerID"_s), u"127.0.0.1"_s);
    QCOMPARE(scene.client.defaults.string(u"AuthportNew"_s), scene.server.portText());
    QCOMPARE(scene.client.networking.dicUpdateVersion().has_value(), true);
    QCOMPARE(scene.server.complaint(), QString());
}

void TestServerSettingWindow::unreachable()
{
    Settings scene;
    scene.show();
    Settings::type(scene.window(), "txtServerAddress", u"127.0.0.1"_s);
    Settings::type(scene.window(), "txtAuthPort", scene.server.portText());
    scene.server.stop();
    Settings::press(scene.window(), "btnConfirm");
    AWAIT(scene.idle());
    QCOMPARE(scene.message(), u"ServerConfigFailed"_s);
    QVERIFY(Settings::find(scene.window(), "btnConfirm")->isEnabled());
    QVERIFY(!scene.client.defaults.contains(u"ServerID"_s));
    QVERIFY(!scene.ended());
}

void TestServerSettingWindow::confirmedOnce()
{
    Settings scene;
    scene.show();
    scene.server.expect(ping, ScriptedAnswer::json("{}")).expect(check, ScriptedAnswer::json("{}"));
    Settings::type(scene.window(), "txtServerAddress", u"127.0.0.1"_s);
    Settings::type(scene.window(), "txtAuthPort", scene.server.portText());
    Settings::pressTwice(scene.window(), "btnConfirm");
    scene.controller->performConfirm();
    QTest::keyClicks(Settings::find(scene.window(), "txtServerAddress"), u"9"_s);
    AWAIT(scene.idle());
    QCOMPARE(scene.posted, QStringList{u"NotificationWantLoginWindow"_s});
    QCOMPARE(scene.client.defaults.string(u"ServerID"_s), u"127.0.0.1"_s);
    QCOMPARE(scene.server.complaint(), QString());
}

void TestServerSettingWindow::necessary()
{
    Settings scene;
    scene.controller->setNecessary(true);
    scene.controller->performDisappear();
    QCOMPARE(scene.terminated, 1);
    QCOMPARE(scene.posted, QStringList());

    // A configuration that was fetched clears the mark.
    scene.show();
    scene.server.expect(ping, ScriptedAnswer::json("{}")).expect(check, ScriptedAnswer::json("{}"));
    Settings::type(scene.window(), "txtServerAddress", u"127.0.0.1"_s);
    Settings::type(scene.window(), "txtAuthPort", scene.server.portText());
    Settings::press(scene.window(), "btnConfirm");
    AWAIT(scene.idle());
    QCOMPARE(scene.terminated, 1);
    QCOMPARE(scene.posted, QStringList{u"NotificationWantLoginWindow"_s});
}

void TestServerSettingWindow::leaving_data()
{
    QTest::addColumn<bool>("byClosing");
    QTest::addColumn<bool>("up");
    QTest::addColumn<QVariant>("hideLogin");
    QTest::addColumn<bool>("quits");
    QTest::newRow("cancel, server up") << false << true << QVariant(1) << false;
    QTest::newRow("cancel, server down") << false << false << QVariant() << true;
    QTest::newRow("close, server up") << true << true << QVariant() << false;
    QTest::newRow("close, server down") << true << false << QVariant() << true;
    QTest::newRow("close, login hidden") << true << true << QVariant(1) << true;
    QTest::newRow("close, login not hidden") << true << true << QVariant(0) << false;
    QTest::newRow("close, login hidden twice") << true << true << QVariant(2) << false;
}

void TestServerSettingWindow::leaving()
{
    QFETCH(bool, byClosing);
    QFETCH(bool, up);
    QFETCH(QVariant, hideLogin);
    QFETCH(bool, quits);
    Settings scene;
    scene.storeServer();
    if (hideLogin.isValid()) {
        const QVariantMap config{{u"hideLogin"_s, hideLogin}};
        const QVariantMap thirdauth{{u"config"_s, config}};
        scene.client.defaults.set(u"ThirdPartyDic"_s, QVariantMap{{u"thirdauth"_s, thirdauth}});
    }
    scene.show();
    if (up)
        scene.server.expect(byClosing ? "POST /v1/ping" : "POST /api/v1/ping",
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
    AWAIT(scene.ended());
    QCOMPARE(scene.terminated, quits ? 1 : 0);
    QCOMPARE(scene.posted, quits ? QStringList() : QStringList{u"NotificationWantLoginWindow"_s});
    QCOMPARE(scene.controller->isVisible(), !byClosing);
    QCOMPARE(scene.server.complaint(), QString());
}

void TestServerSettingWindow::leavingWithoutServer_data()
{
    QTest::addColumn<QString>("missing");
    QTest::newRow("no address") << u"ServerID"_s;
    QTest::newRow("no port") << u"AuthportNew"_s;
}

void TestServerSettingWindow::leavingWithoutServer()
{
    QFETCH(QString, missing);
    Settings scene;
    scene.storeServer();
    scene.client.defaults.set(missing, u""_s);
    scene.show();
    scene.controller->performCancel();
    QCOMPARE(scene.terminated, 1);
    scene.window()->close();
    QCOMPARE(scene.terminated, 2);
    QVERIFY(!scene.controller->isVisible());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestServerSettingWindow::gone_data()
{
    QTest::addColumn<int>("stage");
    QTest::newRow("while checking") << 0;
    QTest::newRow("while cancelling") << 1;
    QTest::newRow("while closing") << 2;
    QTest::newRow("when told to show the login window") << 3;
}

void TestServerSettingWindow::gone()
{
    QFETCH(int, stage);
    Settings scene;
    scene.storeServer();
    scene.show();
    scene.server.answerAll(ScriptedAnswer::json("{}"));
    if (stage == 0)
        scene.controller->performConfirm();
    else if (stage == 1)
        scene.controller->performCancel();
    else
        scene.window()->close();
    if (stage == 3)
        scene.whenPosted = [&] { scene.controller.reset(); };
    else
        scene.controller.reset();
    QVERIFY(scene.server.waitForRequests(1));
    AWAIT(stage != 3 || !scene.posted.isEmpty());
    QTest::qWait(50); // what is still queued for the window must find nobody
    QVERIFY(!scene.controller);
    QCOMPARE(scene.posted.size(), stage == 3 ? 1 : 0);
    QCOMPARE(scene.terminated, 0);
}

void TestServerSettingWindow::focusColours()
{
    Settings scene;
    scene.show();
    const char *const boxes[] = {"boxServerAddress", "boxAuthPort"};
    for (int tag : {1, 2}) {
        QWidget *box = Settings::find(scene.window(), boxes[tag - 1]);
        scene.center.post(NotificationNames::serverSettingTextFieldActive(), {}, {{u"Active"_s, tag}});
        QCOMPARE(box->property("borderColor").value<QColor>(), QColor(0xDD, 0x33, 0x33));
        scene.center.post(NotificationNames::serverSettingTextFieldDeactive(), {}, {{u"Deactive"_s, tag}});
        QVERIFY(box->property("borderColor").value<QColor>() != QColor(0xDD, 0x33, 0x33));
    }
}

REGISTER_TEST(TestServerSettingWindow)
#include "TestServerSettingWindow.moc"
