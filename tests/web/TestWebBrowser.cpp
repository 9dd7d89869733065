#include "BrowserScene.h"
#include "support/ScriptedServer.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using Failure = platform::WebBrowser::Failure;

/// The real embedded browser against a small web site.
class TestWebBrowser : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void requests();
    void ownAddresses();
    void oldPageAnswers_data();
    void oldPageAnswers();
    void evaluate_data();
    void evaluate();
    void messages();
    void unknownCertificate();
    void nothingKept();
    void failures_data();
    void failures();
    void explainedRefusal();
    void staysOnPage_data();
    void staysOnPage();
    void missingPlugin();
};

void TestWebBrowser::requests()
{
    BrowserScene scene;
    QVERIFY(scene.open(u"/there"_s));
    QCOMPARE(scene.seen, (QStringList{u"/there"_s, u"/plain"_s}));
    QCOMPARE(scene.ready, 1);
    scene.seen.clear();
    QVERIFY(scene.open(u"/parts#a"_s));
    QTRY_COMPARE(scene.seen.size(), 4);
    scene.seen.sort();
    QCOMPARE(scene.seen, (QStringList{u"/data?1"_s, u"/frame"_s, u"/parts#a"_s, u"/picture"_s}));
    scene.seen.clear();
    QVERIFY(scene.open(u"/window"_s));
    QTRY_COMPARE(scene.seen, (QStringList{u"/window"_s, u"/plain?opened"_s}));
    QTRY_COMPARE(scene.text(), u"plain"_s); // in the same view
}

void TestWebBrowser::ownAddresses()
{
    BrowserScene scene;
    QVERIFY(scene.open(u"/plain"_s));
    scene.seen.clear();
    scene.value(u"location.hash = '#/?ticket=ST-1'"_s);
    scene.value(u"history.pushState({}, '', '/pushed?a=1#b')"_s);
    scene.value(u"history.back()"_s);
    QTRY_COMPARE(scene.seen, (QStringList{u"/plain#/?ticket=ST-1"_s, u"/pushed?a=1#b"_s, u"/plain#/?ticket=ST-1"_s}));
    QCOMPARE(scene.finished, QList<bool>{true});
}

void TestWebBrowser::oldPageAnswers_data()
{
    QTest::addColumn<QString>("leave");
    QTest::newRow("redirect") << u"location.href = '/ticket'"_s;
    QTest::newRow("link") << u"location.href = '/plain#/?ticket=ST-1'"_s;
    QTest::newRow("form") << u"document.body.innerHTML += '<form action=/ticket>'; document.forms[0].submit()"_s;
    QTest::newRow("same page") << u"location.hash = '#/?ticket=ST-1'"_s;
}

void TestWebBrowser::oldPageAnswers()
{
    QFETCH(QString, leave);
    BrowserScene scene;
    QVERIFY(scene.open(u"/form"_s));
    QStringList names;
    connect(scene.browser.get(), &platform::WebBrowser::willSendRequest, this, [&](const QUrl &url) {
        if (!url.toString().contains(u"#/?ticket=ST-1"_s))
            return;
        scene.browser->evaluate(u"document.getElementById(\"username\").value"_s,
                                [&](const QString &name) { names.append(name); });
        QVERIFY(names.isEmpty()); // never inside the call
    });
    scene.value(leave);
    QTRY_COMPARE(names, QStringList{u"zoë"_s});
}

void TestWebBrowser::evaluate_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("value");
    QTest::newRow("text") << u"'a' + \"b\""_s << u"ab"_s;
    QTest::newRow("number") << u"6 * 7"_s << u"42"_s;
    QTest::newRow("empty text") << u"''"_s << u""_s;
    QTest::newRow("null") << u"null"_s << QString();
    QTest::newRow("error") << u"document.getElementById('x').value"_s << QString();
    QTest::newRow("no script") << u"((("_s << QString();
    QTest::newRow("busy page") << u"for (;;) {}"_s << QString();
}

void TestWebBrowser::evaluate()
{
    QFETCH(QString, script);
    QFETCH(QString, value);
    BrowserScene scene;
    QVERIFY(scene.open(u"/plain"_s));
    const QString answer = scene.value(script);
    QCOMPARE(answer, value);
    QCOMPARE(answer.isNull(), value.isNull());
}

void TestWebBrowser::messages()
{
    BrowserScene scene;
    QVariantList bodies;
    connect(scene.browser.get(), &platform::WebBrowser::scriptMessage, this,
            [&](const QString &name, const QVariant &body) {
                QCOMPARE(name, u"done"_s);
                bodies.append(body);
            });
    scene.browser->addScriptMessageHandler(u"no identifier"_s);
    scene.browser->addScriptMessageHandler(u"done"_s);
    QVERIFY(scene.open(u"/messages"_s));
    QTRY_COMPARE(bodies.size(), 2);
    const QVariantList list = bodies.at(0).toMap().value(u"a"_s).toList();
    QCOMPARE(list.size(), 3);
    QCOMPARE(list.at(0).toInt(), 1);
    QCOMPARE(list.at(1).toString(), u"é"_s);
    QCOMPARE(bodies.at(1), QVariant(u"none"_s));
}

void TestWebBrowser::unknownCertificate()
{
    testing::ScriptedServer secure(testing::ScriptedServer::Security::Tls);
    secure.answerAll(testing::ScriptedAnswer::reply("<p>secure</p>", 200, "Content-Type: text/html\r\n"));
    BrowserScene scene;
    scene.browser->load(QUrl(secure.url()));
    QTRY_COMPARE_WITH_TIMEOUT(scene.finished, QList<bool>{true}, 15'000);
    QCOMPARE(scene.text(), u"secure"_s);
}

void TestWebBrowser::nothingKept()
{
    BrowserScene first;
    QVERIFY(first.open(u"/cookie"_s));
    QVERIFY(first.open(u"/cookie"_s));
    QCOMPARE(first.text(), u"known=yes|"_s);
    BrowserScene second;
    second.browser->load(first.server.url(u"/cookie"_s));
    QTRY_COMPARE(second.finished, QList<bool>{true});
    QCOMPARE(second.text(), u"|"_s);
}

void TestWebBrowser::failures_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<Failure>("failure");
    QTest::newRow("error status without a page") << u"/broken"_s << Failure::LoadError;
    QTest::newRow("redirects without end") << u"/loop"_s << Failure::LoadError;
    QTest::newRow("no answer") << u"/hang"_s << Failure::NoAnswer;
    QTest::newRow("empty page") << u"/empty"_s << Failure::NoAnswer;
    QTest::newRow("script without end") << u"/spin"_s << Failure::NoAnswer;
    QTest::newRow("pages without end") << u"/forever"_s << Failure::NoAnswer;
    QTest::newRow("nobody there") << QString() << Failure::LoadError;
    QTest::newRow("no page's address") << u"ftp://x"_s << Failure::LoadError;
}

void TestWebBrowser::failures()
{
    QFETCH(QString, path);
    QFETCH(Failure, failure);
    BrowserScene scene;
    scene.browser->patience = std::chrono::milliseconds(600);
    if (path.isNull()) {
        testing::ScriptedServer gone;
        const QUrl address(gone.url());
        gone.stop();
        scene.browser->load(address);
    } else if (path.startsWith(u'/')) {
        scene.load(path);
    } else {
        scene.browser->load(QUrl(path));
    }
    QTRY_COMPARE_WITH_TIMEOUT(scene.failures, QList<Failure>{failure}, 15'000);
}

void TestWebBrowser::explainedRefusal()
{
    BrowserScene scene;
    QVERIFY(scene.open(u"/refused"_s));
    QCOMPARE(scene.text(), u"we are sorry"_s);
    QCOMPARE(scene.failures.size(), 0);
}

void TestWebBrowser::staysOnPage_data()
{
    QTest::addColumn<QString>("leave");
    QTest::newRow("foreign scheme") << u"location.href = 'zzz://x'"_s;
    QTest::newRow("local file") << u"location.href = 'file:///etc/passwd'"_s;
    QTest::newRow("window of a script") << u"window.open('javascript:1')"_s;
}

void TestWebBrowser::staysOnPage()
{
    QFETCH(QString, leave);
    BrowserScene scene;
    QVERIFY(scene.open(u"/plain"_s));
    scene.value(leave);
    QTest::qWait(300); // what would happen has happened
    QCOMPARE(scene.text(), u"plain"_s);
    QCOMPARE(scene.failures.size(), 0);
}

void TestWebBrowser::missingPlugin()
{
    for (const QString &folder : {u"/nonexistent"_s, u""_s}) {
        QString error;
        QVERIFY(!platform::makeWebBrowser(folder, &error));
        QVERIFY(!error.isEmpty());
    }
}

REGISTER_TEST(TestWebBrowser)
#include "TestWebBrowser.moc"
