#include "BrowserScene.h"
#include "support/Cases.h"
#include "support/ScriptedServer.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using Failure = platform::WebBrowser::Failure;

namespace
{
/// How a page tries to go away.
struct Departure {
    const char *name;
    QString script;
};

const QList<Departure> ticketDepartures{
    {"redirect", u"location.href = '/ticket'"_s},
    {"link", u"location.href = '/plain#/?ticket=ST-1'"_s},
    {"form", u"document.body.innerHTML += '<form action=/ticket>'; document.forms[0].submit()"_s},
    {"same page", u"location.hash = '#/?ticket=ST-1'"_s},
};

const QList<Departure> refusedDepartures{
    {"foreign scheme", u"location.href = 'zzz://x'"_s},
    {"local file", u"location.href = 'file:///etc/passwd'"_s},
    {"window of a script", u"window.open('javascript:1')"_s},
};

struct Script {
    const char *name;
    QString script;
    QString value; ///< null: none
};

const QList<Script> scripts{
    {"text", u"'a' + \"b\""_s, u"ab"_s},
    {"number", u"6 * 7"_s, u"42"_s},
    {"empty text", u"''"_s, u""_s},
    {"null", u"null"_s, {}},
    {"error", u"document.getElementById('x').value"_s, {}},
    {"no script", u"((("_s, {}},
    {"busy page", u"for (;;) {}"_s, {}},
};

struct Trouble {
    const char *name;
    QString address; ///< null: of a server that is gone
    Failure failure;
};

const QList<Trouble> troubles{
    {"error status without a page", u"/broken"_s, Failure::LoadError},
    {"redirects without end", u"/loop"_s, Failure::LoadError},
    {"no answer", u"/hang"_s, Failure::NoAnswer},
    {"empty page", u"/empty"_s, Failure::NoAnswer},
    {"script without end", u"/spin"_s, Failure::NoAnswer},
    {"pages without end", u"/forever"_s, Failure::NoAnswer},
    {"nobody there", {}, Failure::LoadError},
    {"no page's address", u"ftp://x"_s, Failure::LoadError},
};

QUrl addressOfNobody()
{
    testing::ScriptedServer gone;
    const QUrl address(gone.url());
    gone.stop();
    return address;
}
} // namespace

/// The real embedded browser against a small web site.
class TestWebBrowser : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void requests()
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

    void ownAddresses()
    {
        BrowserScene scene;
        QVERIFY(scene.open(u"/plain"_s));
        scene.seen.clear();
        scene.value(u"location.hash = '#/?ticket=ST-1'"_s);
        scene.value(u"history.pushState({}, '', '/pushed?a=1#b')"_s);
        scene.value(u"history.back()"_s);
        const QString ticket = u"/plain#/?ticket=ST-1"_s;
        QTRY_COMPARE(scene.seen, (QStringList{ticket, u"/pushed?a=1#b"_s, ticket}));
        QCOMPARE(scene.finished, QList<bool>{true});
    }

    void oldPageAnswers_data() { testing::addCases(ticketDepartures); }
    void oldPageAnswers()
    {
        const auto &[name, leave] = testing::currentCase(ticketDepartures);
        BrowserScene scene;
        QVERIFY(scene.open(u"/form"_s));
        QStringList names;
        connect(scene.browser.get(), &platform::WebBrowser::willSendRequest, this, [&](const QUrl &url) {
            if (!url.toString().contains(u"#/?ticket=ST-1"_s))
                return;
            scene.browser->evaluate(u"document.getElementById(\"username\").value"_s,
                                    [&](const QString &value) { names.append(value); });
            QVERIFY(names.isEmpty()); // never inside the call
        });
        scene.value(leave);
        QTRY_COMPARE(names, QStringList{u"zoë"_s});
    }

    void evaluate_data() { testing::addCases(scripts); }
    void evaluate()
    {
        const auto &[name, script, value] = testing::currentCase(scripts);
        BrowserScene scene;
        QVERIFY(scene.open(u"/plain"_s));
        const QString answer = scene.value(script);
        QCOMPARE(answer, value);
        QCOMPARE(answer.isNull(), value.isNull());
    }

    void messages()
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

    void unknownCertificate()
    {
        testing::ScriptedServer secure(testing::ScriptedServer::Security::Tls);
        secure.answerAll(testing::ScriptedAnswer::reply("<p>secure</p>", 200, "Content-Type: text/html\r\n"));
        BrowserScene scene;
        QVERIFY(scene.open(secure.url()));
        QCOMPARE(scene.text(), u"secure"_s);
    }

    void nothingKept()
    {
        BrowserScene first;
        QVERIFY(first.open(u"/cookie"_s) && first.open(u"/cookie"_s));
        QCOMPARE(first.text(), u"known=yes|"_s);
        BrowserScene second;
        QVERIFY(second.open(u"/cookie"_s));
        QCOMPARE(second.text(), u"|"_s);
    }

    void failures_data() { testing::addCases(troubles); }
    void failures()
    {
        const auto &[name, address, failure] = testing::currentCase(troubles);
        BrowserScene scene;
        scene.browser->patience = std::chrono::milliseconds(600);
        scene.load(address.isNull() ? addressOfNobody().toString() : address);
        QTRY_COMPARE_WITH_TIMEOUT(scene.failures, QList<Failure>{failure}, 15'000);
    }

    void explainedRefusal()
    {
        BrowserScene scene;
        QVERIFY(scene.open(u"/refused"_s));
        QCOMPARE(scene.text(), u"we are sorry"_s);
        QCOMPARE(scene.failures.size(), 0);
    }

    void staysOnPage_data() { testing::addCases(refusedDepartures); }
    void staysOnPage()
    {
        const auto &[name, leave] = testing::currentCase(refusedDepartures);
        BrowserScene scene;
        QVERIFY(scene.open(u"/plain"_s));
        scene.value(leave);
        QTest::qWait(300); // what would happen has happened
        QCOMPARE(scene.text(), u"plain"_s);
        QCOMPARE(scene.failures.size(), 0);
    }

    void missingPlugin()
    {
        for (const QString &folder : {u"/nonexistent"_s, u""_s}) {
            QString error;
            QVERIFY(!platform::makeWebBrowser(folder, &error));
            QVERIFY(!error.isEmpty());
        }
    }
};

REGISTER_TEST(TestWebBrowser)
#include "TestWebBrowser.moc"
