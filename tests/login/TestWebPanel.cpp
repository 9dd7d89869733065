#include "login/WebPanel.h"
#include "support/FakeWebBrowser.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QLabel>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;
using Failure = platform::WebBrowser::Failure;

Q_DECLARE_METATYPE(platform::WebBrowser::Failure)

/// The content of the windows that show web pages.
class TestWebPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void failures_data();
    void failures();
    void faces();
    void waiting();
    void messages();
    void endedByItsOwnSignal();

private:
    static QAbstractButton *button(const WebPanel &panel, const char *name)
    {
        return panel.findChild<QAbstractButton *>(QLatin1String(name));
    }
};

void TestWebPanel::failures_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("hasPlugin");
    QTest::addColumn<Failure>("failure");
    QTest::addColumn<QString>("title");
    QTest::addColumn<bool>("opensOutside");
    const QString web = u"https://a.example/p?q#f"_s;
    QTest::newRow("load error") << web << true << Failure::LoadError << u"LoadError.title"_s << true;
    QTest::newRow("no answer") << web << true << Failure::NoAnswer << u"NoAnswer.title"_s << true;
    QTest::newRow("crash") << web << true << Failure::Crash << u"Crash.title"_s << true;
    QTest::newRow("no plug-in") << web << false << Failure::LoadError << u"NoPlugin.title"_s << true;
    QTest::newRow("file") << u"file:///x/index.html"_s << true << Failure::Crash << u"Crash.title"_s << false;
    QTest::newRow("script") << u"javascript:alert(1)"_s << false << Failure::LoadError << u"NoPlugin.title"_s << false;
}

void TestWebPanel::failures()
{
    QFETCH(QString, address);
    QFETCH(bool, hasPlugin);
    QFETCH(Failure, failure);
    QFETCH(bool, opensOutside);
    testing::FakeWebBrowsers browsers;
    if (!hasPlugin)
        browsers.error = u"missing"_s;
    QList<QUrl> opened;
    WebPanel panel(browsers.maker(), [&](const QUrl &url) { opened.append(url); });
    QSignalSpy backs(&panel, &WebPanel::backRequested);
    panel.show();
    panel.load(QUrl(address));
    if (hasPlugin)
        Q_EMIT browsers.newest->failed(failure, u"because"_s);
    QCOMPARE(panel.state(), WebPanel::State::Failure);
    QTEST(panel.findChild<QLabel *>(u"txtFailureTitle"_s)->text(), "title");
    for (const char *name : {"btnReload", "btnOpenInBrowser", "btnBack"})
        QVERIFY(!button(panel, name)->accessibleName().isEmpty());
    QCOMPARE(button(panel, "btnOpenInBrowser")->isVisible(), opensOutside);
    QVERIFY(button(panel, "btnReload")->isVisible());
    button(panel, "btnBack")->click();
    QCOMPARE(backs.size(), 1);
    button(panel, "btnOpenInBrowser")->click();
    QCOMPARE(opened, QList<QUrl>{QUrl(address)});

    browsers.error.clear();
    button(panel, "btnReload")->click();
    QCOMPARE(browsers.made, hasPlugin ? 2 : 1); // never the one that is stuck
    QCOMPARE(browsers.newest->loaded, QList<QUrl>{QUrl(address)});
    QCOMPARE(panel.state(), WebPanel::State::Loading);
}

void TestWebPanel::faces()
{
    testing::FakeWebBrowsers browsers;
    WebPanel panel(browsers.maker(), [](const QUrl &) {});
    QCOMPARE(panel.state(), WebPanel::State::Empty);
    QCOMPARE(browsers.made, 0);
    panel.load(QUrl(u"https://a.example"_s));
    QCOMPARE(panel.state(), WebPanel::State::Loading);
    QVERIFY(!browsers.newest->view()->isVisibleTo(&panel));
    Q_EMIT browsers.newest->navigationFinished(false); // stopped, nothing to see
    QCOMPARE(panel.state(), WebPanel::State::Loading);
    Q_EMIT browsers.newest->documentReady();
    QCOMPARE(panel.state(), WebPanel::State::Page);
    QVERIFY(browsers.newest->view()->isVisibleTo(&panel));
    panel.unload();
    QCOMPARE(panel.state(), WebPanel::State::Empty);
    QTRY_VERIFY(!browsers.newest);
    QString answer = u"none yet"_s;
    panel.evaluate(u"1"_s, [&](const QString &value) { answer = value; });
    QTRY_VERIFY(answer.isNull());
}

void TestWebPanel::waiting()
{
    testing::FakeWebBrowsers browsers;
    browsers.answersLater = true;
    WebPanel panel(browsers.maker(), [](const QUrl &) {});
    panel.load(QUrl(u"https://a.example"_s));
    Q_EMIT browsers.newest->documentReady();
    panel.setWaiting(true);
    QString answer;
    panel.evaluate(u"name"_s, [&](const QString &value) { answer = value; });
    Q_EMIT browsers.newest->failed(Failure::LoadError, u"refused"_s);
    Q_EMIT browsers.newest->navigationFinished(true);
    QCOMPARE(panel.state(), WebPanel::State::Loading);
    browsers.newest->answerAll(u"ann"_s); // the page before the failed one still answers
    QCOMPARE(answer, u"ann"_s);
    panel.load(QUrl(u"https://b.example"_s));
    Q_EMIT browsers.newest->documentReady();
    QCOMPARE(panel.state(), WebPanel::State::Page);
}

void TestWebPanel::messages()
{
    testing::FakeWebBrowsers browsers;
    WebPanel panel(browsers.maker(), [](const QUrl &) {});
    QSignalSpy messages(&panel, &WebPanel::scriptMessage);
    panel.addScriptMessageHandler(u"early"_s);
    panel.load(QUrl(u"https://a.example"_s));
    panel.addScriptMessageHandler(u"late"_s);
    QCOMPARE(browsers.newest->handlers, (QStringList{u"early"_s, u"late"_s}));
    Q_EMIT browsers.newest->scriptMessage(u"early"_s, 7);
    QCOMPARE(messages.value(0), (QVariantList{u"early"_s, 7}));
    panel.unload();
    panel.load(QUrl(u"https://a.example"_s));
    QCOMPARE(browsers.newest->handlers, (QStringList{u"early"_s, u"late"_s}));
}

void TestWebPanel::endedByItsOwnSignal()
{
    testing::FakeWebBrowsers browsers;
    auto panel = std::make_unique<WebPanel>(browsers.maker(), [](const QUrl &) {});
    connect(panel.get(), &WebPanel::willSendRequest, this, [&] { panel.reset(); });
    panel->load(QUrl(u"https://a.example"_s));
    Q_EMIT browsers.newest->willSendRequest(QUrl(u"https://a.example/x"_s));
    QVERIFY(!panel);
    QTRY_VERIFY(!browsers.newest);
}

REGISTER_TEST(TestWebPanel)
#include "TestWebPanel.moc"
