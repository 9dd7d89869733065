#include "ServedScene.h"
#include "login/ResetPWRules.h"
#include "login/ResetPWWindowController.h"
#include "state/PersistentKeys.h"
#include "support/Cases.h"
#include "support/FakeHost.h"
#include "support/FakeWebBrowser.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;

namespace
{
QJsonObject channels(bool sms, bool email)
{
    return {{u"vcode_server_status"_s, QJsonObject{{u"send_vcode_by_sms"_s, sms}, {u"send_vcode_by_email"_s, email}}}};
}

struct ResetScene : ServedScene {
    explicit ResetScene(const QJsonObject &scenario) : ServedScene(scenario)
    {
        client.defaults.set(PersistentKeys::serverID(), u"127.0.0.1"_s);
        ResetPWWindowController::Collaborators with{*networking, client.globe, client.defaults, center, notes};
        with.browser = browsers.maker();
        with.page = u"/resources/index.html"_s;
        with.openExternally = [](const QUrl &) {};
        with.alertDelay = std::chrono::milliseconds(30);
        controller = std::make_unique<ResetPWWindowController>(with);
        center.addObserver(&observer, NotificationNames::wantLoginWindow(),
                           [this](const platform::Notification &sent) { objects.append(sent.object); });
        controller->showWindow();
    }
    ~ResetScene() override { controller.reset(); }

    /// The user was sent back once, by the reset window.
    bool wentBack() const { return objects == QVariantList{QVariantMap{{u"from"_s, u"resetWC"_s}}}; }

    testing::FakeUserNotifications notes;
    testing::FakeWebBrowsers browsers;
    QVariantList objects;
    std::unique_ptr<ResetPWWindowController> controller;
};

struct Language {
    const char *name;
    const char *code;
};

const QList<Language> languages{{"zh-Hans-CN", "zh-cn"}, {"zh-Hant-HK", "zh-tw"}, {"fr-FR", "en-us"}, {"zh", "en-us"}};

struct SetUp {
    const char *name;
    QString serverID;
    QByteArray config;
    bool https;
    QString port;
    QString script; ///< null: none
};

const QByteArray known = R"({"https":false})";
const QList<SetUp> setUps{
    {"https", u"docs.example.org"_s, known, true, u"9998"_s, u"initQB('en-us','https://docs.example.org',9998);"_s},
    {"http, any value", u"[::1]"_s, R"({"https":null})", false, u"80"_s, u"initQB('en-us','http://[::1]',80);"_s},
    {"no https entry", u"x"_s, R"({"port":1})", true, u"80"_s, {}},
    {"no server", {}, known, true, u"80"_s, {}},
    {"port is no number", u"x"_s, known, true, u"80);alert(1"_s, {}},
    {"quotes and backslashes", u"a'\\\n</script>\u2028"_s, known, false, u"1"_s,
     u"initQB('en-us','http://a\\u0027\\u005c\\u000a\\u003c/script\\u003e\\u2028',1);"_s},
};

struct Switch {
    const char *name; ///< the configuration
    bool off;
};

const QList<Switch> switches{
    {"{}", false},
    {R"({"vcode_server_status":{}})", true},
    {R"({"vcode_server_status":{"send_vcode_by_sms":true}})", false},
    {R"({"vcode_server_status":{"send_vcode_by_email":1}})", false},
    {R"({"vcode_server_status":7})", false},
};
} // namespace

class TestResetPWWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void language_data() { testing::addCases(languages); }
    void language()
    {
        const auto &[preferred, code] = testing::currentCase(languages);
        QCOMPARE(ResetPWRules::languageCode(QLatin1String(preferred)), QLatin1String(code));
    }

    void scripts_data() { testing::addCases(setUps); }
    void scripts()
    {
        const auto &[name, serverID, config, https, port, script] = testing::currentCase(setUps);
        const QJsonObject object = QJsonDocument::fromJson(config).object();
        QCOMPARE(ResetPWRules::initScript(u"en"_s, serverID, object, https, port), script);
    }

    void switchedOff_data() { testing::addCases(switches); }
    void switchedOff()
    {
        const auto &[config, off] = testing::currentCase(switches);
        QCOMPARE(ResetPWRules::isSwitchedOff(QJsonDocument::fromJson(config).object()), off);
    }

    void pageIsSetUpAndListenedTo()
    {
        ResetScene scene(channels(false, true));
        AWAIT(scene.browsers.newest && !scene.browsers.newest->loaded.isEmpty());
        const QPointer<testing::FakeWebBrowser> page = scene.browsers.newest;
        QCOMPARE(page->loaded, QList<QUrl>{QUrl(u"file:///resources/index.html"_s)});
        QCOMPARE(page->handlers, QStringList{u"showMessage"_s});
        Q_EMIT page->navigationFinished(false);
        Q_EMIT page->navigationFinished(true);
        AWAIT(!page->scripts.isEmpty());
        const QString end = u"','http://127.0.0.1',%1);"_s.arg(scene.documents->httpPort());
        QVERIFY2(page->scripts.constFirst().startsWith("initQB('"_L1) && page->scripts.constFirst().endsWith(end),
                 qPrintable(page->scripts.constFirst()));
        for (const QVariant &other : {QVariant(u"resetdone"_s), QVariant(), QVariant(7), QVariant(true)})
            Q_EMIT page->scriptMessage(u"showMessage"_s, other);
        Q_EMIT page->scriptMessage(u"other"_s, u"resetDone"_s);
        QVERIFY(scene.objects.isEmpty() && scene.notes.scheduled.isEmpty());

        Q_EMIT page->scriptMessage(u"showMessage"_s, u"resetDone"_s);
        QVERIFY(scene.wentBack());
        QCOMPARE(scene.notes.scheduled.size(), 1);
        scene.controller->window()->close();
        QVERIFY(scene.wentBack());
        AWAIT(!page); // the browser ended with the page's work
    }

    void bothChannelsOff()
    {
        ResetScene scene(channels(false, false));
        AWAIT(LoginScene::alert());
        QCOMPARE(scene.browsers.made, 0);
        QVERIFY(scene.objects.isEmpty());
        LoginScene::alert()->buttons().constFirst()->click();
        AWAIT(scene.wentBack());
        scene.controller->window()->close();
        QVERIFY(scene.wentBack());
    }

    /// Nothing that was under way says anything more.
    void closing_data()
    {
        QTest::addColumn<bool>("off");
        QTest::newRow("before the page") << false;
        QTest::newRow("before the alert") << true;
    }
    void closing()
    {
        QFETCH(bool, off);
        ResetScene scene(channels(!off, false));
        scene.controller->window()->close();
        QVERIFY(scene.wentBack() && !scene.controller->isVisible());
        AWAIT(scene.documents->calls().contains(u"auth1.getconfig"_s));
        QTest::qWait(100);
        QCOMPARE(scene.browsers.made, 0);
        QVERIFY(!LoginScene::alert() && scene.wentBack());
    }
};

REGISTER_TEST(TestResetPWWindow)
#include "TestResetPWWindow.moc"
