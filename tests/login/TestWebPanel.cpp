#include "login/WebPanel.h"
#include "support/Cases.h"
#include "support/FakeWebBrowser.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QLabel>
#include <QSignalSpy>

using namespace Qt::StringLiterals;
using Failure = platform::WebBrowser::Failure;

namespace
{
struct PanelFailure {
    const char *name;
    QString address;
    bool hasPlugin;
    Failure failure;
    QString title;
    bool opensOutside;
};

const QString web = u"https://a.example/p?q#f"_s;
const QList<PanelFailure> panelFailures{
    {"load error", web, true, Failure::LoadError, u"LoadError.title"_s, true},
    {"no answer", web, true, Failure::NoAnswer, u"NoAnswer.title"_s, true},
    {"crash", web, true, Failure::Crash, u"Crash.title"_s, true},
    {"no plug-in", web, false, Failure::LoadError, u"NoPlugin.title"_s, true},
    {"file", u"file:///x/index.html"_s, true, Failure::Crash, u"Crash.title"_s, false},
    {"script", u"javascript:alert(1)"_s, false, Failure::LoadError, u"NoPlugin.title"_s, false},
};

struct PanelScene {
    PanelScene() { browsers.answersLater = true; }

    void load(const QString &address = web)
    {
        panel->load(QUrl(address));
        page = browsers.newest;
    }
    void ask()
    {
        panel->evaluate(u"name"_s, asker.get(),
                        [this](const QString &value) { answers.append(value.isNull() ? u"null"_s : value); });
    }
    void fail(Failure failure) { Q_EMIT page->failed(failure, u"because"_s); }
    QAbstractButton *button(const char *name) { return panel->findChild<QAbstractButton *>(QLatin1String(name)); }

    testing::FakeWebBrowsers browsers;
    QList<QUrl> opened;
    std::unique_ptr<WebPanel> panel =
        std::make_unique<WebPanel>(browsers.maker(), [this](const QUrl &url) { opened.append(url); });
    QPointer<testing::FakeWebBrowser> page;
    std::unique_ptr<QObject> asker = std::make_unique<QObject>();
    QStringList answers;
};

/// What may happen between a question to a page and its answer.
struct PageEnd {
    const char *name;
    std::function<void(PanelScene &scene)> happen;
    QStringList answers;
};

const QList<PageEnd> pageEnds{
    {"nothing", [](PanelScene &) {}, {u"ann"_s}},
    {"another page fails", [](PanelScene &scene) { scene.fail(Failure::LoadError); }, {u"ann"_s}},
    {"crash", [](PanelScene &scene) { scene.fail(Failure::Crash); }, {u"null"_s}},
    {"no answer", [](PanelScene &scene) { scene.fail(Failure::NoAnswer); }, {u"null"_s}},
    {"unload", [](PanelScene &scene) { scene.panel->unload(); }, {u"null"_s}},
    {"asker gone", [](PanelScene &scene) { scene.asker.reset(); }, {}},
    {"asker gone after a crash",
     [](PanelScene &scene) {
         scene.fail(Failure::Crash);
         scene.asker.reset();
     },
     {}},
    {"panel gone", [](PanelScene &scene) { scene.panel.reset(); }, {}},
};
} // namespace

/// The content of the windows that show web pages.
class TestWebPanel : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void failures_data() { testing::addCases(panelFailures); }
    void failures()
    {
        const auto &[name, address, hasPlugin, failure, title, opensOutside] = testing::currentCase(panelFailures);
        PanelScene scene;
        if (!hasPlugin)
            scene.browsers.error = u"missing"_s;
        QSignalSpy backs(scene.panel.get(), &WebPanel::backRequested);
        scene.panel->show();
        scene.load(address);
        if (hasPlugin)
            scene.fail(failure);
        QCOMPARE(scene.panel->state(), WebPanel::State::Failure);
        QCOMPARE(scene.panel->findChild<QLabel *>(u"txtFailureTitle"_s)->text(), title);
        QCOMPARE(scene.button("btnOpenInBrowser")->isVisible(), opensOutside);
        QVERIFY(scene.button("btnReload")->isVisible());
        scene.button("btnBack")->click();
        QCOMPARE(backs.size(), 1);
        scene.button("btnOpenInBrowser")->click();
        QCOMPARE(scene.opened, QList<QUrl>{QUrl(address)});

        scene.browsers.error.clear();
        scene.button("btnReload")->click();
        QCOMPARE(scene.browsers.made, hasPlugin ? 2 : 1); // never the one that is stuck
        QCOMPARE(scene.browsers.newest->loaded, QList<QUrl>{QUrl(address)});
        QCOMPARE(scene.panel->state(), WebPanel::State::Loading);
    }

    void faces()
    {
        PanelScene scene;
        QCOMPARE(scene.panel->state(), WebPanel::State::Empty);
        QCOMPARE(scene.browsers.made, 0);
        scene.load();
        QCOMPARE(scene.panel->state(), WebPanel::State::Loading);
        QVERIFY(!scene.page->view()->isVisibleTo(scene.panel.get()));
        Q_EMIT scene.page->navigationFinished(false); // stopped, nothing to see
        QCOMPARE(scene.panel->state(), WebPanel::State::Loading);
        Q_EMIT scene.page->documentReady();
        QCOMPARE(scene.panel->state(), WebPanel::State::Page);
        QVERIFY(scene.page->view()->isVisibleTo(scene.panel.get()));
        scene.panel->unload();
        QCOMPARE(scene.panel->state(), WebPanel::State::Empty);
        QTRY_VERIFY(!scene.page);
        scene.ask(); // nobody
        QTRY_COMPARE(scene.answers, QStringList{u"null"_s});
    }

    void waiting()
    {
        PanelScene scene;
        scene.load();
        Q_EMIT scene.page->documentReady();
        scene.panel->setWaiting(true);
        scene.fail(Failure::LoadError);
        Q_EMIT scene.page->navigationFinished(true);
        QCOMPARE(scene.panel->state(), WebPanel::State::Loading);
        scene.load(u"https://b.example"_s);
        Q_EMIT scene.page->documentReady();
        QCOMPARE(scene.panel->state(), WebPanel::State::Page);
    }

    void questionsEndOnce_data() { testing::addCases(pageEnds); }
    void questionsEndOnce()
    {
        const auto &[name, happen, answers] = testing::currentCase(pageEnds);
        PanelScene scene;
        scene.load();
        scene.ask();
        happen(scene);
        QCOMPARE(scene.answers, QStringList()); // never inside the call
        scene.page->answerAll(u"ann"_s);
        QTRY_COMPARE(scene.answers, answers);
        QCoreApplication::processEvents();
        QCOMPARE(scene.answers, answers);
    }

    void messages()
    {
        PanelScene scene;
        QSignalSpy messages(scene.panel.get(), &WebPanel::scriptMessage);
        scene.panel->addScriptMessageHandler(u"early"_s);
        scene.load();
        scene.panel->addScriptMessageHandler(u"late"_s);
        QCOMPARE(scene.page->handlers, (QStringList{u"early"_s, u"late"_s}));
        Q_EMIT scene.page->scriptMessage(u"early"_s, 7);
        QCOMPARE(messages.value(0), (QVariantList{u"early"_s, 7}));
        scene.panel->unload();
        scene.load();
        QCOMPARE(scene.page->handlers, (QStringList{u"early"_s, u"late"_s}));
    }

    void endedByItsOwnSignal()
    {
        PanelScene scene;
        connect(scene.panel.get(), &WebPanel::willSendRequest, this, [&] { scene.panel.reset(); });
        scene.load();
        Q_EMIT scene.page->willSendRequest(QUrl(u"https://a.example/x"_s));
        QVERIFY(!scene.panel);
        QTRY_VERIFY(!scene.page);
    }
};

REGISTER_TEST(TestWebPanel)
#include "TestWebPanel.moc"
