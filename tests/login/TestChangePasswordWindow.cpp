#include "LoginScene.h"
#include "files/QBPathIndicator.h"
#include "login/QBChangePasswordController.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

Q_DECLARE_METATYPE(testing::ScriptedAnswer)

namespace
{
const QByteArray configuration = "POST /api/v1/auth1?method=getconfig";
const QByteArray change = "POST /api/v1/auth1?method=modifypassword";

struct FakeVolumes : platform::Volumes {
    QStringList mountedPaths() const override { return paths; }
    void unmount(const QString &, bool) override {}
    QStringList paths;
};

struct FakeProcesses : platform::DistributedNotificationCenter {
    void addObserver(QObject *, const QString &, platform::NotificationHandler) override {}
    void post(const QString &name, const QVariantMap &) override { names.append(name); }
    QStringList names;
};

struct Change : LoginScene {
    explicit Change(const QByteArray &info = "{}")
    {
        client.networking.setNotLoginAccountName(u"ann"_s);
        server.expect(configuration, ScriptedAnswer::json(info));
        controller->showWindow();
        QTRY_VERIFY(!message(window(), "passwordRegulation").isEmpty());
    }
    QWidget *window() { return controller->window(); }
    void fill(const QString &from, const QString &to, const QString &again)
    {
        type(window(), "oldPassword", from);
        type(window(), "theNewpassword", to);
        type(window(), "comfirmPassword", again);
    }
    QString line() { return message(window(), "errorMessage"); }

    FakeVolumes volumes;
    FakeProcesses processes;
    std::unique_ptr<QBChangePasswordController> controller =
        std::make_unique<QBChangePasswordController>(client.networking, center, volumes, processes);
};
} // namespace

/// The change-password window.
class TestChangePasswordWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void regulation_data();
    void regulation();
    void localChecks();
    void returnKey();
    void success();
    void refusals_data();
    void refusals();
    void locked_data();
    void locked();
    void lockedClosesByItself();
};

void TestChangePasswordWindow::regulation_data()
{
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<QString>("hint");
    QTest::newRow("strong") << QByteArray(R"({"enable_strong_pwd":true})") << u"强密码提示"_s;
    QTest::newRow("weak") << QByteArray(R"({"enable_strong_pwd":false})") << u"弱密码提示"_s;
    QTest::newRow("not told") << QByteArray("{}") << u"弱密码提示"_s;
    QTest::newRow("no configuration") << QByteArray("junk") << u"弱密码提示"_s;
}

void TestChangePasswordWindow::regulation()
{
    QFETCH(QByteArray, info);
    Change scene(info);
    QTEST(Change::message(scene.window(), "passwordRegulation"), "hint");
}

void TestChangePasswordWindow::localChecks()
{
    Change scene;
    Change::press(scene.window(), "confirmButton");
    QCOMPARE(scene.line(), u"旧密码不能为空。"_s);
    scene.fill(u"a"_s, u"a"_s, u"b"_s);
    QCOMPARE(scene.line(), QString());
    Change::press(scene.window(), "confirmButton");
    QCOMPARE(scene.line(), u"两次输入的密码不一致。"_s);
    QCOMPARE(scene.server.complaint(), QString());
}

void TestChangePasswordWindow::returnKey()
{
    Change scene;
    Change::type(scene.window(), "theNewpassword", u"a"_s);
    QTest::keyClick(Change::find(scene.window(), "theNewpassword"), Qt::Key_Return);
    QCOMPARE(scene.line(), QString());
    QTest::keyClick(Change::find(scene.window(), "comfirmPassword"), Qt::Key_Return);
    QCOMPARE(scene.line(), u"旧密码不能为空。"_s);
    scene.fill(u"a"_s, u"b"_s, u"c"_s);
    QTest::keyClick(Change::find(scene.window(), "oldPassword"), Qt::Key_Return);
    QCOMPARE(scene.line(), u"两次输入的密码不一致。"_s);
}

void TestChangePasswordWindow::success()
{
    Change scene;
    scene.server.expect(change, ScriptedAnswer::json("{}"));
    scene.fill(u"old"_s, u"new"_s, u"new"_s);
    Change::pressTwice(scene.window(), "confirmButton");
    AWAIT(scene.line() == u"修改成功"_s);
    QVERIFY(scene.controller->isVisible());
    scene.controller->changePassword();
    AWAIT(!scene.posted.isEmpty());
    QCOMPARE(scene.posted, QStringList{u"NotificationCloseLoginVerifyWindow"_s});
    QVERIFY(!scene.controller->isVisible());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestChangePasswordWindow::refusals_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QString>("line");
    QTest::newRow("401003") << ScriptedAnswer::json(R"({"errcode":401003})") << u"401003"_s;
    QTest::newRow("another code") << ScriptedAnswer::json(R"({"errcode":401037})") << u"新密码不符合要求。"_s;
    QTest::newRow("not JSON") << ScriptedAnswer::reply("<html>") << u"新密码不符合要求。"_s;
    QTest::newRow("an array") << ScriptedAnswer::json("[]") << u"新密码不符合要求。"_s;
    QTest::newRow("cut") << ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n\r\n{") << u"新密码不符合要求。"_s;
    QTest::newRow("hanging") << ScriptedAnswer::hang() << u"新密码不符合要求。"_s;
}

void TestChangePasswordWindow::refusals()
{
    QFETCH(ScriptedAnswer, answer);
    Change scene;
    scene.server.expect(change, answer);
    scene.fill(u"old"_s, u"new"_s, u"new"_s);
    Change::press(scene.window(), "confirmButton");
    QVERIFY(!Change::find(scene.window(), "confirmButton")->isEnabled());
    AWAIT(Change::find(scene.window(), "confirmButton")->isEnabled());
    QTEST(scene.line(), "line");
    QVERIFY(scene.controller->isVisible());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestChangePasswordWindow::locked_data()
{
    QTest::addColumn<bool>("mounted");
    QTest::addColumn<bool>("byConfirm");
    QTest::newRow("mounted, confirm") << true << true;
    QTest::newRow("mounted, cancel") << true << false;
    QTest::newRow("not mounted") << false << true;
}

void TestChangePasswordWindow::locked()
{
    QFETCH(bool, mounted);
    QFETCH(bool, byConfirm);
    Change scene;
    if (mounted)
        scene.volumes.paths.append(QBPathIndicator::pathForQuillboxVolume());
    scene.server.expect(change, ScriptedAnswer::json(R"({"errcode":401020,"detail":{"remainlockTime":5}})"));
    scene.fill(u"old"_s, u"new"_s, u"new"_s);
    Change::press(scene.window(), "confirmButton");
    AWAIT(Change::find(scene.window(), "confirmButton")->isEnabled());
    QCOMPARE(scene.line(), u"您输入旧密码错误次数超过限制，401020"_s);
    Change::press(scene.window(), byConfirm ? "confirmButton" : "cancelButton");
    QVERIFY(!scene.controller->isVisible());
    if (mounted)
        AWAIT(!scene.processes.names.isEmpty());
    else
        QTest::qWait(100);
    QCOMPARE(scene.processes.names, mounted ? QStringList{u"NotificationStopQuillboxFuseService"_s} : QStringList());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestChangePasswordWindow::lockedClosesByItself()
{
    Change scene;
    scene.server.expect(change, ScriptedAnswer::json(R"({"errcode":401020})"));
    scene.fill(u"old"_s, u"new"_s, u"new"_s);
    Change::press(scene.window(), "confirmButton");
    AWAIT(Change::find(scene.window(), "confirmButton")->isEnabled());
    QElapsedTimer shown;
    shown.start();
    QTRY_VERIFY_WITH_TIMEOUT(!scene.controller->isVisible(), 8000);
    QVERIFY2(shown.elapsed() > 4000, "closed before the text could be read");
}

REGISTER_TEST(TestChangePasswordWindow)
#include "TestChangePasswordWindow.moc"
