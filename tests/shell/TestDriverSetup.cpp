#include "ShellFixture.h"

#include "shell/DriverSetup.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTest>

using namespace testing;
using shell::DriverSetup;

namespace
{
constexpr shell::DriverPauses Quick{.check = std::chrono::milliseconds(5),
                                    .patience = std::chrono::milliseconds(10),
                                    .settle = std::chrono::milliseconds(5)};
const QByteArray BothPackages = "com.github.osxfuse.pkg.Core\ncom.github.osxfuse.pkg.PrefPane\n";
} // namespace

class TestDriverSetup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void check_data();
    void check();
    void installs();
    void goesOnWithoutAnOldDriver();
    void earlyLook_data();
    void earlyLook();
    void findsTheInstaller();
};

void TestDriverSetup::check_data()
{
    QTest::addColumn<QByteArray>("lines"); // null: no check script
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("prompt");
    QTest::addColumn<int>("code");   // 0: nobody may be asked
    QTest::addColumn<int>("needed"); // -1: the application is asked to end
    const auto rows = [](const char *name, const QByteArray &lines, const QString &version, int silent, int first,
                         int second) {
        QTest::addRow("%s, silent", name) << lines << version << false << 0 << silent;
        const bool asks = first != second;
        QTest::addRow("%s, install", name) << lines << version << true << (asks ? 1000 : 0) << first;
        QTest::addRow("%s, not now", name) << lines << version << true << (asks ? 1001 : 0) << second;
    };
    const QString current = QStringLiteral("3.10.4");
    rows("no check", {}, current, 1, 1, 1);
    rows("nothing installed", "", current, 1, 1, -1);
    rows("one package", "com.github.osxfuse.pkg.Core\n", current, 1, 1, -1);
    rows("other package", "com.github.osxfuse.pkg.Core\nxcom.github.osxfuse.pkg.PrefPane\n", current, 1, 1, -1);
    rows("no property list", BothPackages, {}, 1, 1, 1);
    rows("older", BothPackages, QStringLiteral("3.9.12"), 1, 1, 0);
    rows("equal", BothPackages, current, 0, 0, 0);
    rows("newer", BothPackages, QStringLiteral("3.10.10"), 0, 0, 0);
}

void TestDriverSetup::check()
{
    QFETCH(QByteArray, lines);
    QFETCH(QString, version);
    QFETCH(bool, prompt);
    QFETCH(int, code);
    QFETCH(int, needed);
    ShellFixture fixture;
    if (!lines.isNull())
        fixture.files.addResource(QStringLiteral("checkFuse.sh"), "printf '" + lines.replace('\n', "\\n") + "'");
    fixture.host.driver.version = version;
    fixture.alerts.codes = {code};
    int answer = -2;
    DriverSetup driver(
        fixture.host.host, fixture.files.bundle(), fixture.volume(), fixture.alerts.presenter(), [&] { answer = -1; },
        Quick);
    driver.checkNeedInstallFuse(prompt, [&](bool install) { answer = install; });
    QTRY_COMPARE(answer, needed);
    QCOMPARE(fixture.alerts.texts.size(), code ? 1 : 0);
    if (code) {
        QVERIFY2(fixture.alerts.texts.first().endsWith(QLatin1String("3.10.4")),
                 qPrintable(fixture.alerts.texts.first()));
        QVERIFY(fixture.alerts.texts.first().startsWith(u'|'));
        QCOMPARE(fixture.alerts.buttons.first().size(), 2);
    }
}

/// Packages missing, the user agrees; the check turns positive only after the third look.
void TestDriverSetup::installs()
{
    ShellFixture fixture;
    const QString state = fixture.folder.filePath(QStringLiteral("looks"));
    fixture.files.addResource(
        QStringLiteral("checkFuse.sh"),
        "echo x >> " + state.toUtf8() + "\n[ $(wc -l < " + state.toUtf8() +
            ") -gt 3 ] && printf 'com.github.osxfuse.pkg.Core\\ncom.github.osxfuse.pkg.PrefPane\\n'");
    fixture.files.addResource(QStringLiteral("osxfuse-3.10.4.dmg"), "image");
    const QString started = fixture.folder.filePath(QStringLiteral("started"));
    fixture.files.addResource(QStringLiteral("autoInstallFuse.scpt"), "echo \"$1\" > " + started.toUtf8());
    const QString installer = fixture.host.folders.volumes() + QStringLiteral("/FUSE for macOS");
    const QString second = installer + QStringLiteral(" 1");
    fixture.host.volumes.mounted = {QStringLiteral("/"), second, fixture.volume()};
    fixture.alerts.codes = {1000};
    bool done = false;
    DriverSetup driver(
        fixture.host.host, fixture.files.bundle(), fixture.volume(), fixture.alerts.presenter(),
        [] { QFAIL("asked to end"); }, Quick);
    driver.checkFuseInstalled([&] { done = true; });
    QTRY_VERIFY(done);
    const QList<std::pair<QString, bool>> detached{{second, true}, {fixture.volume(), true}};
    QCOMPARE(fixture.host.volumes.unmounted, detached);
    QFile log(started);
    QTRY_VERIFY(log.exists() && log.size() > 0);
    QVERIFY(log.open(QIODevice::ReadOnly));
    QCOMPARE(QString::fromUtf8(log.readAll()).trimmed(), fixture.files.resource(QStringLiteral("osxfuse-3.10.4.dmg")));
    QCOMPARE(fixture.alerts.texts.size(), 1); // looking at a running installation asks nobody
}

void TestDriverSetup::goesOnWithoutAnOldDriver()
{
    ShellFixture fixture;
    fixture.files.addReadyDriver();
    fixture.host.driver.version = QStringLiteral("3.1");
    fixture.alerts.codes = {1001};
    bool done = false;
    DriverSetup driver(
        fixture.host.host, fixture.files.bundle(), fixture.volume(), fixture.alerts.presenter(),
        [] { QFAIL("asked to end"); }, Quick);
    driver.checkFuseInstalled([&] { done = true; });
    QTRY_VERIFY(done);
    QVERIFY(fixture.host.volumes.unmounted.isEmpty());
}

void TestDriverSetup::earlyLook_data()
{
    QTest::addColumn<shell::DriverState>("early");
    QTest::addColumn<bool>("now"); // the driver is there
    QTest::addColumn<int>("questions");
    QTest::newRow("good news saves a look") << shell::DriverState::Ready << false << 0;
    QTest::newRow("installed meanwhile") << shell::DriverState::PackagesMissing << true << 0;
    QTest::newRow("still missing") << shell::DriverState::PackagesMissing << false << 1;
}

void TestDriverSetup::earlyLook()
{
    QFETCH(shell::DriverState, early);
    QFETCH(bool, now);
    QFETCH(int, questions);
    ShellFixture fixture;
    fixture.files.addResource(QStringLiteral("checkFuse.sh"), now ? "printf '" + BothPackages + "'" : QByteArray());
    fixture.host.driver.version = QStringLiteral("3.10.4");
    fixture.alerts.codes = {1000};
    std::promise<shell::DriverState> look;
    DriverSetup driver(
        fixture.host.host, fixture.files.bundle(), fixture.volume(), fixture.alerts.presenter(), [] {}, Quick);
    driver.useEarlyLook(look.get_future().share());
    int needed = -1;
    driver.checkNeedInstallFuse(true, [&](bool install) { needed = install; });
    look.set_value(early);
    QTRY_COMPARE(needed, questions);
    QCOMPARE(fixture.alerts.texts.size(), questions);
    driver.checkNeedInstallFuse(false, [&](bool install) { needed = 2 + install; });
    QTRY_COMPARE(needed, now ? 2 : 3); // old news counts once
}

void TestDriverSetup::findsTheInstaller()
{
    FakeWorkspace workspace;
    QVERIFY(!DriverSetup::CheckFuseInstaller(workspace));
    workspace.running = {{QStringLiteral("com.apple.installer"), 7}};
    QVERIFY(DriverSetup::CheckFuseInstaller(workspace));
}

REGISTER_TEST(TestDriverSetup)
#include "TestDriverSetup.moc"
