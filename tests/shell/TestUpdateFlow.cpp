#include "DelegateFixture.h"

#include "login/ServerSettingWindowController.h"
#include "platform/PropertyList.h"
#include "support/ScriptedServer.h"
#include "support/TestMain.h"

#include <QAbstractButton>
#include <QDir>
#include <QLabel>
#include <QProgressBar>
#include <QTest>

using namespace testing;
using namespace Qt::StringLiterals;

namespace
{

/// A client whose server has a newer version.
struct UpdateScene : DelegateFixture {
    explicit UpdateScene(const QString &result, const ScriptedAnswer &answer = ScriptedAnswer::hang())
    {
        image.answerAll(answer);
        update = {{u"result"_s, result}, {u"latest"_s, u"9.9.9"_s}, {u"downloadurl"_s, image.url(u"/q.dmg"_s)}};
        useServer({{u"update"_s, update}});
        files.addResource(u"appInstall.app/Contents/MacOS/appInstall"_s, "helper");
        files.addResource(u"AppUpdate.plist"_s,
                          platform::PropertyList::serialize(QVariantMap{{u"ShownUpdateWindow"_s, false}}));
        QDir().mkpath(host.folders.caches());
    }

    static QWidget *prompt() { return visibleWindow(u"UpdateWindowController"_s); }
    static QWidget *progress() { return visibleWindow(u"updateProgressWindowController"_s); }
    static QAbstractButton *button(const QString &name) { return prompt()->findChild<QAbstractButton *>(name); }
    bool flag() const
    {
        return platform::PropertyList::readDictionary(files.resource(u"AppUpdate.plist"_s))
            .value_or(QVariantMap())
            .value(u"ShownUpdateWindow"_s)
            .toBool();
    }
    QString serverMessage()
    {
        QBWindowController *window = delegate().loginFlow().serverSettingWindow();
        return window ? window->window()->findChild<QLabel *>(u"txtMessage"_s)->text() : QString();
    }

    ScriptedServer image;
    QJsonObject update; ///< what the server says about it
};

} // namespace

/// From the server's answer over the windows to the download and its ends.
class TestUpdateFlow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void laterGoesOn_data();
    void laterGoesOn();
    void saysWhyThereIsNoUpdate();
    void closingTheProgressEnds();
};

void TestUpdateFlow::laterGoesOn_data()
{
    QTest::addColumn<bool>("fromServerWindow");
    QTest::newRow("at the start") << false;
    QTest::newRow("in the server window") << true;
}

void TestUpdateFlow::laterGoesOn()
{
    QFETCH(bool, fromServerWindow);
    UpdateScene scene(u"optional"_s);
    if (fromServerWindow) {
        scene.delegate().addObservers();
        scene.delegate().loginFlow().flipToServerSettingWindow();
        QTRY_VERIFY(scene.serverWindowShows());
        auto &window =
            static_cast<ServerSettingWindowController &>(*scene.delegate().loginFlow().serverSettingWindow());
        window.performConfirm();
    } else {
        scene.delegate().applicationDidFinishLaunching();
    }
    QTRY_VERIFY(UpdateScene::prompt());
    QVERIFY(!scene.loginShows());
    QCOMPARE(scene.serverWindowShows(), fromServerWindow);
    UpdateScene::button(u"btnLater"_s)->click();
    QVERIFY(!UpdateScene::prompt());
    QTRY_VERIFY(scene.loginShows() && !scene.serverWindowShows());
    QVERIFY(scene.flag());
    QCOMPARE(scene.image.connections(), 0);
    QCOMPARE(scene.ended, 0);
}

void TestUpdateFlow::saysWhyThereIsNoUpdate()
{
    UpdateScene scene(u"forced"_s, ScriptedAnswer::reply("", 404));
    scene.networking.setDicUpdateVersion(scene.update);
    scene.globe.setServer({u"127.0.0.1"_s, QString::number(scene.server->server->httpPort()), false});
    scene.delegate().showUpdateQBVersionWindow(false);
    QTRY_VERIFY(UpdateScene::prompt());
    UpdateScene::button(u"btnUpdateNow"_s)->click();
    QTRY_COMPARE(scene.serverMessage(), downloadFaultText(DownloadFault::HttpStatus, u"404"_s));
    QVERIFY(scene.serverWindowShows() && !UpdateScene::progress());
    // Another try asks anew.
    scene.delegate().showUpdateQBVersionWindow(true);
    QTRY_VERIFY(UpdateScene::prompt());
    UpdateScene::button(u"btnUpdateNow"_s)->click();
    QTRY_COMPARE(scene.image.requests().size(), 2);
    QTRY_VERIFY(!UpdateScene::progress() && scene.serverWindowShows());
    QCOMPARE(scene.ended, 0);
}

void TestUpdateFlow::closingTheProgressEnds()
{
    UpdateScene scene(u"optional"_s);
    scene.delegate().applicationDidFinishLaunching();
    QTRY_VERIFY(UpdateScene::prompt());
    UpdateScene::button(u"btnUpdateNow"_s)->click();
    QVERIFY(scene.image.waitForRequests(1));
    UpdateScene::progress()->close();
    QTRY_COMPARE(scene.ended, 1);
    QVERIFY(!scene.loginShows());
}

REGISTER_TEST(TestUpdateFlow)
#include "TestUpdateFlow.moc"
