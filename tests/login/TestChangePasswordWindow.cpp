#include "LoginScene.h"
#include "files/QBPathIndicator.h"
#include "login/QBChangePasswordController.h"
#include "support/Cases.h"
#include "support/FakeHost.h"
#include "support/TestMain.h"

#include <QElapsedTimer>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

namespace
{
const QByteArray change = "POST /api/v1/auth1?method=modifypassword";

struct Change : LoginScene {
    explicit Change(const QByteArray &info = "{}")
    {
        client.networking.setNotLoginAccountName(u"ann"_s);
        server.expect(configurationCall, ScriptedAnswer::json(info));
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
    /// Sends a change and waits for its answer.
    void send(const ScriptedAnswer &answer)
    {
        server.expect(change, answer);
        fill(u"old"_s, u"new"_s, u"new"_s);
        press(window(), "confirmButton");
        QVERIFY(!isEnabled(window(), "confirmButton"));
        AWAIT(isEnabled(window(), "confirmButton"));
    }
    QString line() { return message(window(), "errorMessage"); }

    testing::FakeVolumes volumes;
    testing::FakeDistributedNotifications processes;
    std::unique_ptr<QBChangePasswordController> controller =
        std::make_unique<QBChangePasswordController>(client.networking, center, volumes, processes);
};

struct Regulation {
    const char *name; ///< the server's configuration
    QString hint;
};

const QList<Regulation> regulations{
    {R"({"enable_strong_pwd":true})", u"强密码提示"_s},
    {R"({"enable_strong_pwd":false})", u"弱密码提示"_s},
    {"{}", u"弱密码提示"_s},
    {"junk", u"弱密码提示"_s},
};

struct Refusal {
    const char *name;
    ScriptedAnswer answer;
    QString line = u"新密码不符合要求。"_s;
};

const QList<Refusal> refusals{
    {"401003", ScriptedAnswer::json(R"({"errcode":401003})"), u"401003"_s},
    {"another code", ScriptedAnswer::json(R"({"errcode":401037})")},
    {"not JSON", ScriptedAnswer::reply("<html>")},
    {"an array", ScriptedAnswer::json("[]")},
    {"cut", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\n\r\n{")},
    {"hanging", ScriptedAnswer::hang()},
};

struct Locked {
    const char *name;
    bool mounted;
    const char *button;
};

const QList<Locked> locks{
    {"mounted, confirm", true, "confirmButton"},
    {"mounted, cancel", true, "cancelButton"},
    {"not mounted", false, "confirmButton"},
};
} // namespace

/// The change-password window.
class TestChangePasswordWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void regulation_data() { testing::addCases(regulations); }
    void regulation()
    {
        const auto &[info, hint] = testing::currentCase(regulations);
        Change scene(info);
        QCOMPARE(Change::message(scene.window(), "passwordRegulation"), hint);
    }

    void localChecks()
    {
        Change scene;
        Change::type(scene.window(), "theNewpassword", u"a"_s);
        Change::pressKey(scene.window(), "theNewpassword", Qt::Key_Return);
        QCOMPARE(scene.line(), QString()); // the way to the last field is not done yet
        Change::pressKey(scene.window(), "comfirmPassword", Qt::Key_Return);
        QCOMPARE(scene.line(), u"旧密码不能为空。"_s);
        scene.fill(u"a"_s, u"b"_s, u"c"_s);
        QCOMPARE(scene.line(), QString());
        Change::pressKey(scene.window(), "oldPassword", Qt::Key_Return);
        QCOMPARE(scene.line(), u"两次输入的密码不一致。"_s);
        QTest::keyClick(scene.window(), Qt::Key_Escape);
        QVERIFY(!scene.controller->isVisible());
    }

    void success()
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
    }

    void refused_data() { testing::addCases(refusals); }
    void refused()
    {
        const auto &[name, answer, line] = testing::currentCase(refusals);
        Change scene;
        scene.send(answer);
        QCOMPARE(scene.line(), line);
        QVERIFY(scene.controller->isVisible());
    }

    void locked_data() { testing::addCases(locks); }
    void locked()
    {
        const auto &[name, mounted, button] = testing::currentCase(locks);
        Change scene;
        if (mounted)
            scene.volumes.mounted.append(QBPathIndicator::pathForQuillboxVolume());
        scene.send(ScriptedAnswer::json(R"({"errcode":401020,"detail":{"remainlockTime":5}})"));
        QCOMPARE(scene.line(), u"您输入旧密码错误次数超过限制，401020"_s);
        Change::press(scene.window(), button);
        QVERIFY(!scene.controller->isVisible());
        if (mounted) {
            AWAIT(!scene.processes.posted.isEmpty());
            QCOMPARE(scene.processes.posted.first().first, u"NotificationStopQuillboxFuseService"_s);
        } else {
            QTest::qWait(100);
        }
        QCOMPARE(scene.processes.posted.size(), mounted ? 1 : 0);
    }

    void lockedClosesByItself()
    {
        Change scene;
        scene.send(ScriptedAnswer::json(R"({"errcode":401020})"));
        QElapsedTimer shown;
        shown.start();
        QTRY_VERIFY_WITH_TIMEOUT(!scene.controller->isVisible(), 8000);
        QVERIFY2(shown.elapsed() > 4000, "closed before the text could be read");
    }
};

REGISTER_TEST(TestChangePasswordWindow)
#include "TestChangePasswordWindow.moc"
