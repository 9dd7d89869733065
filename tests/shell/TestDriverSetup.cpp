#include "ShellFixture.h"

#include "shell/DriverSetup.h"
#include "support/Cases.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QTest>

using namespace testing;
using namespace Qt::StringLiterals;
using shell::DriverSetup;
using shell::DriverState;

namespace
{
constexpr shell::DriverPauses Quick{.check = std::chrono::milliseconds(5),
                                    .patience = std::chrono::milliseconds(10),
                                    .settle = std::chrono::milliseconds(5)};
const QByteArray Core = "com.github.osxfuse.pkg.Core\n";
const QByteArray BothPackages = Core + "com.github.osxfuse.pkg.PrefPane\n";
constexpr int Ends = -1; ///< the application is asked to end

struct Installed {
    const char *name;
    QByteArray lines; ///< null: no check script
    QString version;
    int silent; ///< must it be installed, when nobody may be asked
    int agreed; ///< … when the user chooses the first button, if there is a question
    int refused;
};
const QList<Installed> InstalledCases{
    {"no check", {}, u"3.10.4"_s, 1, 1, 1},
    {"nothing installed", "", u"3.10.4"_s, 1, 1, Ends},
    {"one package", Core, u"3.10.4"_s, 1, 1, Ends},
    {"other package", Core + "xcom.github.osxfuse.pkg.PrefPane\n", u"3.10.4"_s, 1, 1, Ends},
    {"no property list", BothPackages, {}, 1, 1, 1},
    {"older", BothPackages, u"3.9.12"_s, 1, 1, 0},
    {"equal", BothPackages, u"3.10.4"_s, 0, 0, 0},
    {"newer", BothPackages, u"3.10.10"_s, 0, 0, 0}};

struct EarlyLook {
    const char *name;
    DriverState early;
    bool now; ///< the driver is there
    int questions;
};
const QList<EarlyLook> EarlyLooks{{"good news saves a look", DriverState::Ready, false, 0},
                                  {"installed meanwhile", DriverState::PackagesMissing, true, 0},
                                  {"still missing", DriverState::PackagesMissing, false, 1}};

struct Scene : ShellFixture {
    explicit Scene(int code) { alerts.codes = {code}; }

    /// What the check finds; null lines: there is no check script.
    void find(const QByteArray &lines, const QString &version)
    {
        if (!lines.isNull())
            files.addResource(u"checkFuse.sh"_s, "printf '" + QByteArray(lines).replace('\n', "\\n") + "'");
        host.driver.version = version;
    }

    /// Made when it is first asked for, with the resources that are there by then.
    DriverSetup &driver()
    {
        if (!setup)
            setup.emplace(
                host.host, files.bundle(), volume(), alerts.presenter(), [this] { ended = true; }, Quick);
        return *setup;
    }

    bool ended = false;

private:
    std::optional<DriverSetup> setup;
};
} // namespace

class TestDriverSetup : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void check_data() { addCases(InstalledCases); }
    void check();
    void installs();
    void goesOnWithoutAnOldDriver();
    void earlyLook_data() { addCases(EarlyLooks); }
    void earlyLook();
};

void TestDriverSetup::check()
{
    const auto &[name, lines, version, silent, agreed, refused] = currentCase(InstalledCases);
    const bool asks = agreed != refused;
    for (const auto &[prompt, code, expected] :
         QList<std::tuple<bool, int, int>>{{false, 1000, silent}, {true, 1000, agreed}, {true, 1001, refused}}) {
        Scene scene(code);
        scene.find(lines, version);
        std::optional<bool> needed;
        scene.driver().checkNeedInstallFuse(prompt, [&](bool install) { needed = install; });
        QTRY_VERIFY(needed || scene.ended);
        QCOMPARE(scene.ended ? Ends : int(*needed), expected);
        QCOMPARE(scene.alerts.texts.size(), prompt && asks ? 1 : 0);
        for (const QString &text : std::as_const(scene.alerts.texts))
            QVERIFY2(text.startsWith(u'|') && text.endsWith(u"3.10.4"), qPrintable(text));
        QCOMPARE(scene.alerts.buttons.value(0).size(), prompt && asks ? 2 : 0);
    }
}

/// Packages missing, the user agrees; the check turns positive only after the third look.
void TestDriverSetup::installs()
{
    Scene scene(1000);
    const QByteArray looks = scene.folder.filePath(u"looks"_s).toUtf8();
    scene.files.addResource(u"checkFuse.sh"_s, "echo x >> " + looks + "\n[ $(wc -l < " + looks +
                                                   ") -gt 3 ] && printf '" +
                                                   QByteArray(BothPackages).replace('\n', "\\n") + "'");
    scene.files.addResource(u"osxfuse-3.10.4.dmg"_s, "image");
    const QString started = scene.folder.filePath(u"started"_s);
    scene.files.addResource(u"autoInstallFuse.scpt"_s, "echo \"$1\" > " + started.toUtf8());
    const QString second = scene.host.folders.volumes() + u"/FUSE for macOS 1"_s;
    scene.host.volumes.mounted = {u"/"_s, second, scene.volume()};
    bool done = false;
    scene.driver().checkFuseInstalled([&] { done = true; });
    QTRY_VERIFY(done);
    const QList<std::pair<QString, bool>> detached{{second, true}, {scene.volume(), true}};
    QCOMPARE(scene.host.volumes.unmounted, detached);
    QTRY_COMPARE(QString::fromUtf8(contentOf(started)), scene.files.resource(u"osxfuse-3.10.4.dmg"_s) + u'\n');
    QCOMPARE(scene.alerts.texts.size(), 1); // looking at a running installation asks nobody
    QVERIFY(!scene.ended);
}

void TestDriverSetup::goesOnWithoutAnOldDriver()
{
    Scene scene(1001);
    scene.find(BothPackages, u"3.1"_s);
    bool done = false;
    scene.driver().checkFuseInstalled([&] { done = true; });
    QTRY_VERIFY(done);
    QVERIFY(scene.host.volumes.unmounted.isEmpty() && !scene.ended);
}

void TestDriverSetup::earlyLook()
{
    const auto &[name, early, now, questions] = currentCase(EarlyLooks);
    Scene scene(1000);
    scene.find(now ? BothPackages : "", u"3.10.4"_s);
    std::promise<DriverState> look;
    scene.driver().useEarlyLook(look.get_future().share());
    int needed = -1;
    scene.driver().checkNeedInstallFuse(true, [&](bool install) { needed = install; });
    look.set_value(early);
    QTRY_COMPARE(needed, questions);
    QCOMPARE(scene.alerts.texts.size(), questions);
    scene.driver().checkNeedInstallFuse(false, [&](bool install) { needed = 2 + install; });
    QTRY_COMPARE(needed, now ? 2 : 3); // old news counts once
}

REGISTER_TEST(TestDriverSetup)
#include "TestDriverSetup.moc"
