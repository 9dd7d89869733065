#include "support/TestMain.h"
#include "web/EngineSetup.h"
#include "web/RequestWatch.h"
#include "web/ScriptBridge.h"

#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

/// The parts of the embedded browser that need no page.
class TestWebParts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lines_data();
    void lines();
    void handlers();
    void flags();
    void addresses();
};

void TestWebParts::lines_data()
{
    QTest::addColumn<QString>("content"); // behind the prefix
    QTest::addColumn<bool>("meant");
    QTest::addColumn<QVariant>("body");
    QTest::newRow("text") << u"[\"done\",\"a\"]"_s << true << QVariant(u"a"_s);
    QTest::newRow("null") << u"[\"done\",null]"_s << true << QVariant();
    QTest::newRow("other handler") << u"[\"other\",1]"_s << false << QVariant();
    QTest::newRow("too short") << u"[\"done\"]"_s << false << QVariant();
    QTest::newRow("too long") << u"[\"done\",1,2]"_s << false << QVariant();
    QTest::newRow("no list") << u"{\"done\":1}"_s << false << QVariant();
    QTest::newRow("garbage") << u"[\"done\","_s << false << QVariant();
    QTest::newRow("deep") << QString(100'000, u'[') << false << QVariant();
    QTest::newRow("beyond the limit") << u"[\"done\",\"%1\"]"_s.arg(QString(1 << 20, u'x')) << false << QVariant();
}

void TestWebParts::lines()
{
    QFETCH(QString, content);
    QFETCH(bool, meant);
    ScriptBridge bridge;
    bridge.addHandler(u"done"_s);
    const QString ready = bridge.readyScript();
    const QString prefix = ready.mid(ready.indexOf(u'{'), ready.indexOf(u'}') - ready.indexOf(u'{') + 1);
    QCOMPARE(bridge.read(prefix + u"ready"_s)->kind, ScriptBridge::Line::Kind::Ready);
    const auto line = bridge.read(prefix + content);
    QCOMPARE(line.has_value(), meant);
    if (line)
        QTEST(line->body, "body");
    QVERIFY(!bridge.read(content)); // the page's own
}

void TestWebParts::handlers()
{
    ScriptBridge bridge;
    QVERIFY(bridge.addHandler(u"gotoLogin"_s));
    for (const QString &name : {u"gotoLogin"_s, u""_s, u"a b"_s, u"1a"_s, u"a']"_s, u"a\n"_s})
        QVERIFY2(!bridge.addHandler(name), qPrintable(name));
    QVERIFY(bridge.handlerScript().contains(u"[\"gotoLogin\"]"_s));
}

void TestWebParts::flags()
{
    QCOMPARE(EngineSetup::flags({}, false), QByteArray("--disable-gpu"));
    QCOMPARE(EngineSetup::flags("--mine", false), QByteArray("--mine --disable-gpu"));
    QVERIFY(EngineSetup::flags({}, true).contains("--no-sandbox"));
}

void TestWebParts::addresses()
{
    RequestWatch watch;
    QSignalSpy seen(&watch, &RequestWatch::seen);
    const QUrl page(u"https://a.example/p"_s);
    watch.expect(page);
    watch.addressChanged(page); // on its way anyway
    watch.addressChanged(QUrl());
    QCOMPARE(seen.size(), 0);
    watch.addressChanged(QUrl(u"https://a.example/p#1"_s));
    watch.addressChanged(QUrl(u"https://a.example/p#1"_s));
    watch.addressChanged(page);
    QCOMPARE(seen.size(), 2);
}

REGISTER_TEST(TestWebParts)
#include "TestWebParts.moc"
