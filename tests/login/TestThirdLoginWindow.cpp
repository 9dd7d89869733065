#include "LoginScene.h"
#include "login/EmbeddedThirdLogin.h"
#include "login/ThirdLoginWindowController.h"
#include "support/Cases.h"
#include "support/FakeWebBrowser.h"
#include "support/LogRecorder.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using platform::WebBrowser;
using testing::ScriptedAnswer;

namespace
{
const QByteArray exchange = "POST /api/v1/auth1?method=getbythirdparty";
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
        server.expect(configurationCall, ScriptedAnswer::json(config));
        const int before = browsers.made;
        controller->showWindow();
        controller->loadThirdWebView();
        AWAIT(browsers.made > before && browsers.newest->loaded.size() == 1);
        browsers.newest->answer = u"ann"_s;
    }
    testing::FakeWebBrowser &page() { return *browsers.newest; }
    void send(const QString &url) { Q_EMIT page().willSendRequest(QUrl(url)); }
    WebPanel::State state() { return find<WebPanel>(controller->window(), "webView")->state(); }

    testing::FakeWebBrowsers browsers;
    int backs = 0;
    std::unique_ptr<ThirdLoginWindowController> controller =
        std::make_unique<ThirdLoginWindowController>(client.networking, center, browsers.maker(), [](const QUrl &) {});
};

struct SignOn {
    const char *name;
    QString address;
    QByteArray params;
    bool crashes = false; ///< the page, before it has told the user's name
};

const QList<SignOn> signOns{
    {"ticket", ticketAddress, R"({"ticket":"ST-1"})"},
    {"return address", u"https://docs.example/back?a=1&b=%25#2"_s, R"({"a":"1","b":"%252"})"},
    {"page that dies", ticketAddress, R"({"ticket":"ST-1"})", true},
};

struct SignOnFailure {
    const char *name;
    ScriptedAnswer answer;
    QString text; ///< null: any
    bool crashes = false;
};

const QList<SignOnFailure> signOnFailures{
    {"refused", ScriptedAnswer::json(refusal), u"said"_s},
    {"refused, page that dies", ScriptedAnswer::json(refusal), u"said"_s, true},
    {"no session", ScriptedAnswer::json("{}"), u"NoSession"_s},
    {"garbage", ScriptedAnswer::reply("<html>"), {}},
    {"cut", ScriptedAnswer::raw("HTTP/1.1 200 OK\r\nContent-Length: 90\r\n\r\n{"), {}},
};

/// The server takes a ticket once.
struct Repetition {
    const char *name;
    QByteArray first;
    QByteArray second;
};

const QList<Repetition> repetitions{{"second refused", session, refusal}, {"first refused", refusal, session}};

struct EarlyEnd {
    const char *name;
    void (*end)(SingleSignOn &scene);
    int backs;
};

const QList<EarlyEnd> earlyEnds{
    {"closed", [](SingleSignOn &scene) { scene.controller->window()->close(); }, 1},
    {"gone", [](SingleSignOn &scene) { scene.controller.reset(); }, 0},
};
} // namespace

/// Signing in through an external authenticator, with a page that does what the test wants.
class TestThirdLoginWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void success_data() { testing::addCases(signOns); }
    void success()
    {
        const auto &[name, address, params, crashes] = testing::currentCase(signOns);
        const testing::LogRecorder log;
        SingleSignOn scene;
        scene.browsers.answersLater = crashes;
        scene.begin();
        QCOMPARE(scene.page().loaded, QList<QUrl>{QUrl(u"https://sso.example/login?platform=mac"_s)});
        scene.server.expect(exchange, ScriptedAnswer::json(session));
        scene.server.answerAll(ScriptedAnswer::json("{}"));
        Q_EMIT scene.page().documentReady();
        QCOMPARE(scene.state(), WebPanel::State::Page);
        scene.send(address);
        QCOMPARE(scene.page().scripts, QStringList{u"document.getElementById(\"username\").value"_s});
        QCOMPARE(scene.state(), WebPanel::State::Loading);
        if (crashes)
            Q_EMIT scene.page().failed(WebBrowser::Failure::Crash, u"died"_s);
        AWAIT(!scene.posted.isEmpty());
        QCOMPARE(scene.posted, QStringList{NotificationNames::loginSuccess()});
        QCOMPARE(scene.client.networking.notLoginAccountName(), crashes ? u""_s : u"ann"_s);
        const QJsonObject body = scene.body(1);
        QCOMPARE(body.value(u"thirdpartyid"_s).toString(), u"cas"_s);
        QCOMPARE(QJsonDocument(body.value(u"params"_s).toObject()).toJson(QJsonDocument::Compact), params);
        QVERIFY(!scene.controller->isVisible());
        QCOMPARE(scene.backs, 0);
        AWAIT(!scene.browsers.newest);
        QVERIFY(!log.contains(u"ST-1"_s));
    }

    void failure_data() { testing::addCases(signOnFailures); }
    void failure()
    {
        const auto &[name, answer, text, crashes] = testing::currentCase(signOnFailures);
        SingleSignOn scene;
        scene.browsers.answersLater = crashes;
        scene.begin();
        scene.server.expect(exchange, answer);
        scene.send(ticketAddress);
        // The page the ticket was for need not exist.
        Q_EMIT scene.page().failed(crashes ? WebBrowser::Failure::Crash : WebBrowser::Failure::LoadError, u"gone"_s);
        QCOMPARE(scene.state(), WebPanel::State::Loading);
        AWAIT(SingleSignOn::alert());
        QVERIFY(!scene.controller->isVisible());
        QCOMPARE(scene.backs, 0);
        if (!text.isNull())
            QVERIFY(SingleSignOn::alert()->informativeText() == text || SingleSignOn::alert()->text() == text);
        SingleSignOn::alert()->close();
        AWAIT(scene.backs == 1);
        QCOMPARE(scene.posted, QStringList());
    }

    void nothingSeen()
    {
        SingleSignOn scene;
        scene.begin("{}");
        for (const QString &address : {u"https://docs.example/?ticket=1"_s, u"https://docs.example/back?a=1"_s})
            scene.send(address);
        QCOMPARE(scene.page().scripts, QStringList());
    }

    void twice_data() { testing::addCases(repetitions); }
    void twice()
    {
        const auto &[name, first, second] = testing::currentCase(repetitions);
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
        AWAIT(scene.sent(exchange) == 2);
        QVERIFY(!SingleSignOn::alert());
    }

    void endedBeforeTheName_data() { testing::addCases(earlyEnds); }
    void endedBeforeTheName()
    {
        const auto &[name, end, backs] = testing::currentCase(earlyEnds);
        SingleSignOn scene;
        scene.browsers.answersLater = true;
        scene.begin();
        scene.send(ticketAddress);
        const QPointer<testing::FakeWebBrowser> old = scene.browsers.newest;
        end(scene);
        QCOMPARE(scene.backs, backs);
        if (old)
            old->answerAll(u"ann"_s);
        AWAIT(!old);
    }

    void lateAnswer()
    {
        SingleSignOn scene;
        scene.begin();
        ScriptedAnswer slow = ScriptedAnswer::json(refusal);
        slow.drip = std::chrono::milliseconds(2);
        scene.server.expect(exchange, slow);
        scene.send(ticketAddress);
        AWAIT(scene.server.bodies().size() == 2);
        scene.controller->window()->close();
        scene.begin();     // the next attempt
        QTest::qWait(400); // the slow answer has arrived by now
        QVERIFY(scene.controller->isVisible());
        QVERIFY(!SingleSignOn::alert());
        QCOMPARE(scene.backs, 1);
        QCOMPARE(scene.state(), WebPanel::State::Loading);
    }

    void manyTimes()
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
            const QString address = u"https://sso.example/%1"_s.arg(round);
            QVERIFY(opener.open(address, u"cas"_s));
            if (round % 2 == 0) // the others are closed before there is a page
                AWAIT(scene.browsers.newest && scene.browsers.newest->loaded == QList<QUrl>{QUrl(address)});
            opener.window()->window()->close();
            AWAIT(!scene.browsers.newest);
            const qsizetype now = opener.window()->window()->findChildren<QObject *>().size();
            if (round == 2)
                children = now;
            QVERIFY(round < 3 || now == children);
        }
        QCOMPARE(made, 1);
    }
};

REGISTER_TEST(TestThirdLoginWindow)
#include "TestThirdLoginWindow.moc"
