#include "LoginScene.h"
#include "login/QuickStartWindowController.h"
#include "support/Cases.h"
#include "support/FakeWebBrowser.h"
#include "support/TestMain.h"

using namespace Qt::StringLiterals;
using testing::FakeWebBrowser;

namespace
{
struct WayOut {
    const char *name;
    std::function<void(QWidget &window, FakeWebBrowser &page)> leave;
};

const QList<WayOut> waysOut{
    {"title bar", [](QWidget &window, FakeWebBrowser &) { window.close(); }},
    {"Escape", [](QWidget &window, FakeWebBrowser &) { QTest::keyClick(&window, Qt::Key_Escape); }},
    {"Escape in the page", [](QWidget &, FakeWebBrowser &page) { Q_EMIT page.escapePressed(); }},
    {"back from an explanation",
     [](QWidget &window, FakeWebBrowser &page) {
         Q_EMIT page.failed(platform::WebBrowser::Failure::NoAnswer, u"nothing"_s);
         LoginScene::press(&window, "btnBack");
     }},
};
} // namespace

/// What the windows with a web page have in common, at the example of the one that does nothing else.
class TestWebWindow : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void leaving_data() { testing::addCases(waysOut); }
    void leaving()
    {
        const auto &[name, leave] = testing::currentCase(waysOut);
        testing::FakeWebBrowsers browsers;
        QuickStartWindowController controller(browsers.maker(), [](const QUrl &) {});
        controller.initWithWindowNibName(u"QuickStartWindowController"_s, QUrl(u"https://help.example"_s));
        controller.showWindow();
        controller.loadQuickStartWebView();
        leave(*controller.window(), *browsers.newest);
        QVERIFY(!controller.isVisible());
        AWAIT(!browsers.newest);
    }

    void quickStart()
    {
        testing::FakeWebBrowsers browsers;
        QList<QUrl> opened;
        QuickStartWindowController controller(browsers.maker(), [&](const QUrl &url) { opened.append(url); });
        controller.initWithWindowNibName(u"QuickStartWindowController"_s, QUrl());
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
    }
};

REGISTER_TEST(TestWebWindow)
#include "TestWebWindow.moc"
