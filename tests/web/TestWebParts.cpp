#include "support/Cases.h"
#include "support/TestMain.h"
#include "web/EngineSetup.h"
#include "web/RequestWatch.h"
#include "web/ScriptBridge.h"

#include <QSignalSpy>

using namespace Qt::StringLiterals;

namespace
{
struct Line {
    const char *name;
    QString content; ///< behind the prefix
    bool meant = false;
    QVariant body = {};
};

const QList<Line> consoleLines{
    {"text", u"[\"done\",\"a\"]"_s, true, u"a"_s},
    {"null", u"[\"done\",null]"_s, true},
    {"other handler", u"[\"other\",1]"_s},
    {"too short", u"[\"done\"]"_s},
    {"too long", u"[\"done\",1,2]"_s},
    {"no list", u"{\"done\":1}"_s},
    {"garbage", u"[\"done\","_s},
    {"deep", QString(100'000, u'[')},
    {"beyond the limit", u"[\"done\",\"%1\"]"_s.arg(QString(1 << 20, u'x'))},
};
} // namespace

/// The parts of the embedded browser that need no page.
class TestWebParts : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void lines_data() { testing::addCases(consoleLines); }
    void lines()
    {
        const auto &[name, content, meant, body] = testing::currentCase(consoleLines);
        ScriptBridge bridge;
        bridge.addHandler(u"done"_s);
        const QString ready = bridge.readyScript();
        const QString prefix = ready.mid(ready.indexOf(u'{'), ready.indexOf(u'}') - ready.indexOf(u'{') + 1);
        QCOMPARE(bridge.read(prefix + u"ready"_s)->kind, ScriptBridge::Line::Kind::Ready);
        const auto line = bridge.read(prefix + content);
        QCOMPARE(line.has_value(), meant);
        if (line)
            QCOMPARE(line->body, body);
        QVERIFY(!bridge.read(content)); // the page's own
    }

    void handlers()
    {
        ScriptBridge bridge;
        QVERIFY(bridge.addHandler(u"gotoLogin"_s));
        for (const QString &name : {u"gotoLogin"_s, u""_s, u"a b"_s, u"1a"_s, u"a']"_s, u"a\n"_s})
            QVERIFY2(!bridge.addHandler(name), qPrintable(name));
        QVERIFY(bridge.handlerScript().contains(u"[\"gotoLogin\"]"_s));
    }

    void flags()
    {
        QCOMPARE(EngineSetup::flags("--mine", false), QByteArray("--mine --disable-gpu"));
        QVERIFY(EngineSetup::flags({}, true).contains("--no-sandbox"));
    }

    void addresses()
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
};

REGISTER_TEST(TestWebParts)
#include "TestWebParts.moc"
