#include "ServedScene.h"
#include "support/TestMain.h"
#include "ui/QBImageButton.h"

using namespace Qt::StringLiterals;

/// The sign-in windows against the real document server.
class TestWindowsAgainstServer : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void signsIn();
    void asksForAPictureCode();
    void takesAOneTimePassword();
    void tellsOfALock();
    void changesThePassword();
    void verifiesACode();
    void setsTheServer_data();
    void setsTheServer();
    void endsWithoutAServer();
};

void TestWindowsAgainstServer::signsIn()
{
    ServedScene scene;
    scene.openLogin();
    scene.signIn(u"wrong"_s);
    QVERIFY(!scene.error().isEmpty());
    QVERIFY(!scene.client.defaults.contains(u"AccountName"_s));
    ServedScene::press(scene.window(), "btnAutoLogin");
    scene.signIn(ServedScene::password());
    QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
    QVERIFY(scene.networking->isLogin());
    QCOMPARE(scene.client.defaults.string(u"AccountName"_s), u"demo"_s);
    QCOMPARE(scene.client.defaults.integer(u"AutoLogin"_s), 1);

    // The next start signs in by itself.
    scene.posted.clear();
    scene.login =
        std::make_unique<LoginWindowController>(*scene.networking, scene.client.defaults, scene.center, scene);
    scene.login->showLoginWindowAutoLoginIfNeeded(true);
    AWAIT(scene.posted == QStringList{u"NotificationLoginSuccess"_s});
}

void TestWindowsAgainstServer::asksForAPictureCode()
{
    ServedScene scene({{u"vcode_login_config"_s, QJsonObject{{u"isenable"_s, true}, {u"passwderrcnt"_s, 2}}}});
    scene.openLogin();
    QVERIFY(!ServedScene::shows(scene.window(), "boxVcode"));
    scene.signIn(u"wrong"_s);
    scene.signIn(u"wrong"_s);
    AWAIT(ServedScene::shows(scene.window(), "boxVcode"));
    auto *picture = ServedScene::find<QBImageButton>(scene.window(), "vcodeImage");
    AWAIT(!picture->image().isNull());
    const QImage first = picture->image();
    ServedScene::press(scene.window(), "vcodeImage");
    AWAIT(picture->image() != first);

    scene.fillIn(ServedScene::password());
    QVERIFY(!ServedScene::find<QAbstractButton>(scene.window(), "btnLogin")->isEnabled());
    ServedScene::type(scene.window(), "txtVcode", scene.documents->pictureCodeText(scene.login->uuid()));
    QTest::keyClick(ServedScene::find(scene.window(), "txtVcode"), Qt::Key_Return);
    AWAIT(scene.posted == QStringList{u"NotificationLoginSuccess"_s});
}

void TestWindowsAgainstServer::takesAOneTimePassword()
{
    ServedScene scene({{u"dualfactor_auth_server_status"_s, QJsonObject{{u"auth_by_OTP"_s, true}}}});
    scene.openLogin();
    QVERIFY(ServedScene::shows(scene.window(), "txtOTPCode"));
    QVERIFY(!ServedScene::shows(scene.window(), "btnAutoLogin"));
    ServedScene::type(scene.window(), "txtOTPCode", u"000000"_s);
    scene.signIn(ServedScene::password());
    QVERIFY(!scene.error().isEmpty());
    ServedScene::type(scene.window(), "txtOTPCode", ServedScene::oneTimePassword());
    scene.signIn(ServedScene::password());
    QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
}

void TestWindowsAgainstServer::tellsOfALock()
{
    ServedScene scene({{u"lock"_s, QJsonObject{{u"after"_s, 2}, {u"minutes"_s, 25}}}});
    scene.openLogin();
    for (int attempt = 0; attempt < 3; ++attempt)
        scene.signIn(u"wrong"_s);
    QVERIFY2(scene.error().startsWith(u"您输入错误次数超过限制，"_s), qPrintable(scene.error()));
    scene.signIn(ServedScene::password());
    QVERIFY2(scene.error().startsWith(u"您输入错误次数超过限制，"_s), qPrintable(scene.error()));
    QCOMPARE(scene.posted, QStringList());
}

void TestWindowsAgainstServer::changesThePassword()
{
    ServedScene scene({{u"password"_s, QJsonObject{{u"initial_change"_s, true}}}});
    scene.openLogin();
    scene.signIn(ServedScene::password());
    AWAIT(ServedScene::alert());
    QTest::mouseClick(ServedScene::find(ServedScene::alert(), "alertButton1"), Qt::LeftButton);
    AWAIT(ServedScene::openWindow("QBChangePasswordController"));
    QWidget *change = ServedScene::openWindow("QBChangePasswordController");
    ServedScene::type(change, "oldPassword", ServedScene::password());
    ServedScene::type(change, "theNewpassword", u"Another-pass2"_s);
    ServedScene::type(change, "comfirmPassword", u"Another-pass2"_s);
    QTest::keyClick(ServedScene::find(change, "comfirmPassword"), Qt::Key_Return);
    AWAIT(ServedScene::message(change, "errorMessage") == u"修改成功"_s);
    AWAIT(scene.posted == QStringList{u"NotificationCloseLoginVerifyWindow"_s});
    QVERIFY(!ServedScene::openWindow("QBChangePasswordController"));
    scene.posted.clear();
    scene.signIn(u"Another-pass2"_s);
    QCOMPARE(scene.posted, QStringList{u"NotificationLoginSuccess"_s});
}

void TestWindowsAgainstServer::verifiesACode()
{
    ServedScene scene({{u"dualfactor_auth_server_status"_s, QJsonObject{{u"auth_by_sms"_s, true}}}});
    scene.openLogin();
    scene.signIn(ServedScene::password());
    QCOMPARE(scene.posted, QStringList{u"NotificationWantLoginVerifyWindow"_s});
    QCOMPARE(scene.client.defaults.string(u"AccountName"_s), u"demo"_s);
    LoginVerifyWindowController verification(*scene.networking, scene.client.defaults, scene.center);
    verification.showWindow();
    QWidget *window = verification.window();
    const auto verify = [window](const QString &code) {
        ServedScene::type(window, "verificationCodeTextField", code);
        ServedScene::press(window, "verifyButton");
        AWAIT(!ServedScene::find<QAbstractButton>(window, "verifyButton")->text().isEmpty());
    };
    verify(u"0"_s);
    QVERIFY(!ServedScene::message(window, "errorMessageTextField").isEmpty());
    QCOMPARE(scene.documents->sentCodes().size(), 1);
    verify(scene.documents->sentCodes().constLast().code);
    QCOMPARE(scene.posted.constLast(), u"NotificationLoginSuccess"_s);
    QVERIFY(!verification.isVisible());
}

void TestWindowsAgainstServer::setsTheServer_data()
{
    QTest::addColumn<bool>("https");
    QTest::newRow("http") << false;
    QTest::newRow("https") << true;
}

void TestWindowsAgainstServer::setsTheServer()
{
    QFETCH(bool, https);
    ServedScene scene;
    ServerSettingWindowController settings(*scene.networking, scene.client.defaults, scene.center);
    settings.setNecessary(true);
    settings.showServerSettingWindowWithCode(0);
    const QString port = QString::number(https ? scene.documents->httpsPort() : scene.documents->httpPort());
    ServedScene::type(settings.window(), "txtServerAddress", u"127.0.0.1"_s);
    ServedScene::type(settings.window(), "txtAuthPort", port);
    ServedScene::press(settings.window(), "btnConfirm");
    AWAIT(scene.posted == QStringList{u"NotificationWantLoginWindow"_s});
    QCOMPARE(scene.client.defaults.string(u"ServerID"_s), u"127.0.0.1"_s);
    QCOMPARE(scene.client.defaults.string(u"AuthportNew"_s), port);
    QCOMPARE(scene.networking->isHttpsServer(), https);
    QCOMPARE(scene.terminated, 0);
}

void TestWindowsAgainstServer::endsWithoutAServer()
{
    ServedScene scene;
    scene.client.defaults.set(u"ServerID"_s, u"127.0.0.1"_s);
    scene.client.defaults.set(u"AuthportNew"_s, QString::number(scene.documents->httpPort()));
    ServerSettingWindowController settings(*scene.networking, scene.client.defaults, scene.center);
    settings.showServerSettingWindowWithCode(0);
    ServedScene::press(settings.window(), "btnCancel");
    AWAIT(scene.posted == QStringList{u"NotificationWantLoginWindow"_s});
    settings.showServerSettingWindowWithCode(0);
    scene.documents->stop();
    ServedScene::press(settings.window(), "btnCancel");
    AWAIT(scene.terminated == 1);
}

REGISTER_TEST(TestWindowsAgainstServer)
#include "TestWindowsAgainstServer.moc"
