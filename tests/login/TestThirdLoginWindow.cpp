#include "LoginScene.h"
#include "login/EmbeddedThirdLogin.h"
#include "login/QuickStartWindowController.h"
#include "login/ThirdLoginWindowController.h"
#include "support/FakeWebBrowser.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

#include <QJsonDocument>

#include <algorithm>

using namespace Qt::StringLiterals;
using testing::ScriptedAnswer;

Q_DECLARE_METATYPE(testing::ScriptedAnswer)

namespace
{
const QByteArray configuration = "POST /api/v1/auth1?method=getconfig";
const QByteArray exchange = "POST /api/v1/auth1?method=getbythirdparty";
const QByteArray session = R"({"expires":3600,"userid":"u1","tokenid":"t1"})";
const QByteArray refusal = R"({"errcode":401001,"errmsg":"said"})";
const QString ticketAddress = u"https://docs.example/#/?ticket=ST-1"_s;

struct SingleSignOn : LoginScene {
    SingleSignOn()
    {
        center.addObserver(&observer, NotificationNames::closeThirdLoginWindowShowLoginWindow(),
                           [this](const platform::Notification &) { ++backs; });
        controller->initWithAuthURL(u"https://sso.example/login?platform=mac"_s, u"cas"_s);
    }
    ~SingleSignOn() override { controller.reset(); }

    /// Shows the window and waits until the page is asked for.
    void begin(const QByteArray &config = R"({"thirdauth":{"config":{"matchUrl":"https://docs.example/back"}}})")
    {
        server.expect(configuration, ScriptedAnswer::json(config));
        const int before = browsers.made;
        controller->showWindow();
        controller->loadThirdWebView();
        AWAIT(browsers.made > before && browsers.newest->loaded.size() == 1);
        browsers.newest->answer = u"ann"_s;
    }
    testing::FakeWebBrowser &page() { return *browsers.newest; }
    void send(const QString &url) { Q_EMIT page().willSendRequest(QUrl(url)); }
    WebPanel::State state() { return find<WebPanel>(controller->window(), "webView")->state(); }
    QJsonObject lastBody() const { return QJsonDocument::fromJson(server.bodies().last()).object(); }

    testing::FakeWebBrowsers browsers;
    int backs = 0;
    std::unique_ptr<ThirdLoginWindowController> controller =
        std::make_unique<ThirdLoginWindowController>(client.networking, center, browsers.maker(), [](const QUrl &) {});
};
} // namespace

/// Signing in through an external authenticator, with a page that does what the test wants.
class TestThirdLoginWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void success_data();
    void success();
    void failure_data();
    void failure();
    void nothingSeen();
    void twice_data();
    void twice();
    void closedBeforeTheName();
    void lateAnswer();
    void waysBack();
    void manyTimes();
    void quickStart();
};

void TestThirdLoginWindow::success_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QByteArray>("params");
    QTest::newRow("ticket") << ticketAddress << QByteArray(R"({"ticket":"ST-1"})");
    QTest::newRow("return address") << u"https://docs.example/back?a=1&b=%25#2"_s
                                    << QByteArray(R"({"a":"1","b":"%252"})");
}

void TestThirdLoginWindow::success()
{
    QFETCH(QString, address);
    QFETCH(QByteArray, params);
    const testing::LogRecorder log;
    SingleSignOn scene;
    scene.begin();
    QCOMPARE(scene.page().loaded, QList<QUrl>{QUrl(u"https://sso.example/login?platform=mac"_s)});
    scene.server.expect(exchange, ScriptedAnswer::json(session));
    scene.server.answerAll(ScriptedAnswer::json("{}"));
    Q_EMIT scene.page().documentReady();
    QCOMPARE(scene.state(), WebPanel::State::Page);
    scene.send(address);
    QCOMPARE(scene.page().scripts, QStringList{u"document.getElementById(\"username\").value"_s});
    QCOMPARE(scene.state(), WebPanel::State::Loading);
    AWAIT(!scene.posted.isEmpty());
    QCOMPARE(scene.posted, QStringList{NotificationNames::loginSuccess()});
    const QJsonObject body = QJsonDocument::fromJson(scene.server.bodies().at(1)).object();
    QCOMPARE(body.value(u"thirdpartyid"_s).toString(), u"cas"_s);
    QCOMPARE(QJsonDocument(body.value(u"params"_s).toObject()).toJson(QJsonDocument::Compact), params);
    QVERIFY(!scene.controller->isVisible());
    QCOMPARE(scene.backs, 0);
    AWAIT(!scene.browsers.newest);
    QCOMPARE(scene.server.complaint(), QString());
    QVERIFY(!log.contains(u"ST-1"_s));
}

void TestThirdLoginWindow::failure_data()
{
    QTest::addColumn<ScriptedAnswer>("answer");
    QTest::addColumn<QString>("text");
    QTest::newRow("refused") << ScriptedAnswer::json(refusal) << u"said"_s;
    QTest::newRow("no session") << ScriptedAnswer::json("{}") << u"NoSession"_s;
    QTest::newRow("garbage") << ScriptedAnswer::reply("<html>") << QString();
    QTest::newRow("cut") << ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 90\r\n\r\n{") << QString();
}

void TestThirdLoginWindow::failure()
{
    QFETCH(ScriptedAnswer, answer);
    QFETCH(QString, text);
    SingleSignOn scene;
    scene.begin();
    scene.server.expect(exchange, answer);
    scene.send(ticketAddress);
    // The page the ticket was for need not exist.
    Q_EMIT scene.page().failed(platform::WebBrowser::Failure::LoadError, u"refused"_s);
    QCOMPARE(scene.state(), WebPanel::State::Loading);
    AWAIT(SingleSignOn::alert());
    QVERIFY(!scene.controller->isVisible());
    QCOMPARE(scene.backs, 0);
    if (!text.isNull())
        QVERIFY(SingleSignOn::alert()->informativeText() == text || SingleSignOn::alert()->text() == text);
    SingleSignOn::alert()->close();
    AWAIT(scene.backs == 1);
    QCOMPARE(scene.posted, QStringList());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestThirdLoginWindow::nothingSeen()
{
    SingleSignOn scene;
    scene.begin("{}");
    for (const QString &address : {u"https://docs.example/?ticket=1"_s, u"https://docs.example/back?a=1"_s})
        scene.send(address);
    QCOMPARE(scene.page().scripts, QStringList());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestThirdLoginWindow::twice_data()
{
    QTest::addColumn<QByteArray>("first");
    QTest::addColumn<QByteArray>("second");
    QTest::newRow("second refused") << session << refusal;
    QTest::newRow("first refused") << refusal << session;
}

/// The server takes a ticket once.
void TestThirdLoginWindow::twice()
{
    QFETCH(QByteArray, first);
    QFETCH(QByteArray, second);
    SingleSignOn scene;
    scene.begin();
    scene.server.expect(exchange, ScriptedAnswer::json(first));
    if (second == session)
        scene.server.expect(exchange, ScriptedAnswer::json(second));
    scene.server.answerAll(ScriptedAnswer::json(refusal));
    scene.send(ticketAddress);
    scene.send(ticketAddress);
    AWAIT(!scene.posted.isEmpty());
    QCOMPARE(scene.posted, QStringList{NotificationNames::loginSuccess()});
    const auto sent = [&] {
        const QByteArrayList requests = scene.server.requests();
        return std::count_if(requests.begin(), requests.end(),
                             [](const QByteArray &request) { return request.startsWith(exchange); });
    };
    AWAIT(sent() == 2);
    QVERIFY(!SingleSignOn::alert());
    QCOMPARE(scene.server.complaint(), QString());
}

void TestThirdLoginWindow::closedBeforeTheName()
{
    SingleSignOn scene;
    scene.browsers.answersLater = true;
    scene.begin();
    scene.send(ticketAddress);
    const QPointer<testing::FakeWebBrowser> old = scene.browsers.newest;
    scene.controller->window()->close();
    QCOMPARE(scene.backs, 1);
    if (old)
        old->answerAll(u"ann"_s);
    AWAIT(!old);
    QCOMPARE(scene.server.complaint(), QString());
}

void TestThirdLoginWindow::lateAnswer()
{
    SingleSignOn scene;
    scene.begin();
    ScriptedAnswer slow = ScriptedAnswer::json(refusal);
    slow.drip = std::chrono::milliseconds(2);
    scene.server.expect(exchange, slow);
    scene.send(ticketAddress);
    AWAIT(scene.server.bodies().size() == 2);
    scene.controller->window()->close();
    scene.begin(); // the next attempt
    AWAIT(scene.server.openConnections() >= 1 && scene.server.complaint().isNull());
    QTest::qWait(400); // the slow answer has arrived by now
    QVERIFY(scene.controller->isVisible());
    QVERIFY(!SingleSignOn::alert());
    QCOMPARE(scene.backs, 1);
    QCOMPARE(scene.state(), WebPanel::State::Loading);
}

void TestThirdLoginWindow::waysBack()
{
    SingleSignOn scene;
    scene.begin();
    Q_EMIT scene.page().failed(platform::WebBrowser::Failure::NoAnswer, u"nothing"_s);
    LoginScene::press(scene.controller->window(), "btnBack");
    QCOMPARE(scene.backs, 1);
    QVERIFY(!scene.controller->isVisible());
    scene.begin();
    QTest::keyClick(scene.controller->window(), Qt::Key_Escape);
    QCOMPARE(scene.backs, 2);
    QVERIFY(!scene.controller->isVisible());
}

void TestThirdLoginWindow::manyTimes()
{
    SingleSignOn scene;
    int made = 0;
    EmbeddedThirdLogin opener([&] {
        ++made;
        return std::make_unique<ThirdLoginWindowController>(scene.client.networking, scene.center,
                                                            scene.browsers.maker(), [](const QUrl &) {});
    });
    scene.server.answerAll(ScriptedAnswer::json("{}"));
    qsizetype children = 0;
    for (int round = 0; round < 50; ++round) {
        QVERIFY(opener.open(u"https://sso.example/%1"_s.arg(round), u"cas"_s));
        if (round % 2 == 0) // the others are closed before there is a page
            AWAIT(scene.browsers.newest &&
                  scene.browsers.newest->loaded == QList<QUrl>{QUrl(u"https://sso.example/%1"_s.arg(round))});
        opener.window()->window()->close();
        AWAIT(!scene.browsers.newest);
        const qsizetype now = opener.window()->window()->findChildren<QObject *>().size();
        if (round == 2)
            children = now;
        QVERIFY(round < 3 || now == children);
    }
    QCOMPARE(made, 1);
}

void TestThirdLoginWindow::quickStart()
{
    testing::FakeWebBrowsers browsers;
    QList<QUrl> opened;
    QuickStartWindowController controller(browsers.maker(), [&](const QUrl &url) { opened.append(url); });
    controller.initWithWindowNibName(u"QuickStartWindowController"_s, QUrl());
    controller.showWindow();
    controller.loadQuickStartWebView();
    QCOMPARE(browsers.made, 0);
    const QUrl page(u"https://help.example/q?lang=en&version=1.0.0"_s);
    controller.initWithWindowNibName(u"QuickStartWindowController"_s, page);
    controller.loadQuickStartWebView();
    QCOMPARE(browsers.newest->loaded, QList<QUrl>{page});
    QCOMPARE(LoginScene::message(controller.window(), "titleView"), u"快速入门"_s);
    Q_EMIT browsers.newest->failed(platform::WebBrowser::Failure::LoadError, u"refused"_s);
    LoginScene::press(controller.window(), "btnOpenInBrowser");
    QCOMPARE(opened, QList<QUrl>{page});
    controller.window()->close();
    AWAIT(!browsers.newest);
}

REGISTER_TEST(TestThirdLoginWindow)
#include "TestThirdLoginWindow.moc"
