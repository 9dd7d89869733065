#include "shell/MenuWindow.h"
#include "shell/StatusItem.h"
#include "support/PrivateBus.h"
#include "support/TestMain.h"

#include <QDBusConnection>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>

/// Whether the desktop shows status icons, told by a watcher that is there before us or comes later.
class TestTrayHost : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noticesTheWatcher();
};

void TestTrayHost::noticesTheWatcher()
{
    const testing::PrivateBus bus;
    QVERIFY(bus.isRunning());
    const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
    QDBusConnection desktop = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("the desktop"));
    const std::unique_ptr<shell::TrayHost> early = shell::TrayHost::create();
    QSignalSpy appeared(early.get(), &shell::TrayHost::appeared);
    early->watch();
    QTest::qWait(50);
    QCOMPARE(appeared.size(), 0);
    QVERIFY(desktop.registerService(name));
    QTRY_COMPARE(appeared.size(), 1);

    QMenu menu;
    shell::StatusItem item(menu, shell::TrayHost::create());
    QVERIFY(!item.hasIcon());
    item.show();
    QTRY_VERIFY(item.hasIcon());
}

REGISTER_TEST(TestTrayHost)
#include "TestTrayHost.moc"
