#include "shell/MenuWindow.h"
#include "shell/StatusItem.h"
#include "support/PrivateBus.h"
#include "support/TestMain.h"

#include <QDBusConnection>
#include <QMenu>
#include <QTest>

/// The desktop's list of icons, with somebody who shows them or without.
class Watcher : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hasHost)
public:
    bool hasHost = false;

    bool start(QDBusConnection desktop)
    {
        return desktop.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                      QDBusConnection::ExportAllProperties | QDBusConnection::ExportAllSignals) &&
               desktop.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }

Q_SIGNALS:
    void StatusNotifierHostRegistered();
};

/// Whether the desktop shows status icons, told by a watcher that is there before us, comes later, or goes.
class TestTrayHost : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void noticesTheWatcher();
};

void TestTrayHost::noticesTheWatcher()
{
    testing::PrivateBus bus;
    QVERIFY(bus.isRunning());
    const QString name = QStringLiteral("org.kde.StatusNotifierWatcher");
    QDBusConnection desktop = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("the desktop"));
    QMenu menu;
    shell::StatusItem item(menu, shell::TrayHost::create());
    item.show();
    Watcher watcher;
    QVERIFY(watcher.start(desktop));
    QTest::qWait(50);
    QVERIFY(!item.hasIcon()); // nobody shows icons yet
    watcher.hasHost = true;
    Q_EMIT watcher.StatusNotifierHostRegistered();
    QTRY_VERIFY(item.hasIcon());
    shell::StatusItem later(menu, shell::TrayHost::create());
    later.show();
    QTRY_VERIFY(later.hasIcon());

    QVERIFY(desktop.unregisterService(name));
    QTRY_VERIFY(!item.hasIcon());
    QVERIFY(desktop.registerService(name));
    QTRY_VERIFY(item.hasIcon());

    // A bus that comes back without a tray, and then with one.
    bus.stop();
    bus.start();
    QTRY_VERIFY(!item.hasIcon());
    desktop = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("the desktop again"));
    QVERIFY(watcher.start(desktop));
    QTRY_VERIFY(item.hasIcon());
}

REGISTER_TEST(TestTrayHost)
#include "TestTrayHost.moc"
