#include "ServedScene.h"
#include "login/UserProtocolWindowController.h"
#include "support/TestMain.h"

#include <QPlainTextEdit>

using namespace Qt::StringLiterals;

namespace
{
struct AgreementScene : ServedScene {
    explicit AgreementScene(const QJsonObject &scenario = {}) : ServedScene(scenario), controller(*networking, center)
    {
        networking->loginWithAccountName(account(), password(), {}, {}, [](const QBError &, const ServerReply &) {});
        center.addObserver(&observer, NotificationNames::userProtocolShowVolume(),
                           [this](const platform::Notification &) { ++opened; });
        controller.showWindow();
    }

    QWidget *terms() { return controller.window(); }
    bool canOpen() { return find<QAbstractButton>(terms(), "btnShowVolume")->isEnabled(); }
    qsizetype acceptances() const { return documents->calls().count(u"user.agreedtotermsofuse"_s); }

    UserProtocolWindowController controller;
    int opened = 0;
};
} // namespace

class TestUserProtocolWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void onlyAcceptingLeadsOn()
    {
        AgreementScene scene;
        scene.controller.loadUserProtocol(u"<b>one</b>"_s);
        scene.controller.loadUserProtocol(u"two"_s);
        auto *text = LoginScene::find<QPlainTextEdit>(scene.terms(), "txtViewUserProtocol");
        QCOMPARE(text->toPlainText(), u"<b>one</b>\ntwo"_s);
        QVERIFY(text->isReadOnly());
        QVERIFY((scene.terms()->windowFlags() & (Qt::WindowCloseButtonHint | Qt::WindowMinMaxButtonsHint)) == 0);
        scene.terms()->close();
        QTest::keyClick(scene.terms(), Qt::Key_Escape);
        QVERIFY(scene.terms()->isVisible());
        LoginScene::press(scene.terms(), "btnShowVolume");
        QCOMPARE(scene.opened, 0);

        LoginScene::press(scene.terms(), "btnReadUserProtocol");
        LoginScene::press(scene.terms(), "btnShowVolume");
        QCOMPARE(scene.opened, 1);
        AWAIT(scene.acceptances() == 1);
        QVERIFY(!LoginScene::alert());
    }

    /// With success or without, the acceptance is sent once, and a failure is told once.
    void acceptanceIsSentOnce()
    {
        AgreementScene scene({{u"fail"_s, QJsonObject{{u"user.agreedtotermsofuse"_s, 500001}}}});
        for (const bool ticked : {true, false, true}) {
            LoginScene::press(scene.terms(), "btnReadUserProtocol");
            QCOMPARE(scene.canOpen(), ticked);
        }
        AWAIT(LoginScene::alert());
        QCOMPARE(LoginScene::alert()->buttons().size(), 1);
        LoginScene::alert()->buttons().constFirst()->click();
        AWAIT(!LoginScene::alert());
        LoginScene::press(scene.terms(), "btnReadUserProtocol");
        LoginScene::press(scene.terms(), "btnReadUserProtocol");
        QTest::qWait(50);
        QVERIFY(!LoginScene::alert());
        QCOMPARE(scene.acceptances(), 1);
    }
};

REGISTER_TEST(TestUserProtocolWindow)
#include "TestUserProtocolWindow.moc"
