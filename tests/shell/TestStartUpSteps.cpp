#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "shell/AppUpdateFlag.h"
#include "shell/FirstRunRegistration.h"
#include "shell/FontSetup.h"
#include "shell/SingleInstance.h"
#include "shell/VolumeControl.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <atomic>

using namespace testing;
using platform::PropertyList::readDictionary;

namespace
{
/// A shell script that keeps the arguments of each run, one line a run.
QString recordingTool(const QTemporaryDir &folder, const QString &log)
{
    const QString path = folder.filePath(QStringLiteral("tool"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write("#!/bin/sh\necho \"$@\" >> " + log.toUtf8() + "\nexit 3\n");
    file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return path;
}

QStringList linesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts)
                                          : QStringList();
}
} // namespace

/// The single steps of the start, each by itself.
class TestStartUpSteps : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void otherCopy_data();
    void otherCopy();
    void registration_data();
    void registration();
    void updateFlag_data();
    void updateFlag();
    void fontInstallation_data();
    void fontInstallation();
    void fontPoll();
    void volumes_data();
    void volumes();
};

void TestStartUpSteps::otherCopy_data()
{
    QTest::addColumn<QString>("own");
    QTest::addColumn<QList<qint64>>("same");
    QTest::addColumn<bool>("yields");
    const QString name = QStringLiteral("com.velto.quillbox");
    QTest::newRow("alone") << name << QList<qint64>{10} << false;
    QTest::newRow("not even listed") << name << QList<qint64>{} << false;
    QTest::newRow("another") << name << QList<qint64>{10, 11} << true;
    QTest::newRow("another, listed first") << name << QList<qint64>{9, 10} << true;
    QTest::newRow("no identifier") << QString() << QList<qint64>{11} << false;
}

void TestStartUpSteps::otherCopy()
{
    QFETCH(QString, own);
    QFETCH(QList<qint64>, same);
    QFETCH(bool, yields);
    FakeWorkspace workspace;
    workspace.running = {{QStringLiteral("com.velto.FUSEService"), 50}};
    for (const qint64 processId : same)
        workspace.running.append({own, processId});
    QCOMPARE(shell::SingleInstance::otherCopyRuns(workspace, own, 10), yields);
}

void TestStartUpSteps::registration_data()
{
    QTest::addColumn<QVariantMap>("before");
    QTest::addColumn<bool>("exists");
    QTest::addColumn<bool>("runs");
    const QVariantMap colours{{QStringLiteral("themeColor"), QStringLiteral("0x112233")}};
    QVariantMap done = colours;
    done.insert(QStringLiteral("first"), QStringLiteral("anything"));
    QTest::newRow("first run") << colours << true << true;
    QTest::newRow("later run") << done << true << false;
    QTest::newRow("no branding file") << QVariantMap() << false << true;
}

void TestStartUpSteps::registration()
{
    QFETCH(QVariantMap, before);
    QFETCH(bool, exists);
    QFETCH(bool, runs);
    ShellFixture fixture;
    const QString file = fixture.files.resource(QStringLiteral("QBOEM.plist"));
    if (exists)
        platform::PropertyList::write(file, before);
    const QString log = fixture.folder.filePath(QStringLiteral("runs"));
    fixture.host.scripts.extension = recordingTool(fixture.folder, log);
    const shell::FirstRunRegistration registration(fixture.host.scripts, fixture.files.bundle(), Branding(file));
    QCOMPARE(registration.registerOnce(), runs);
    const QString extension = fixture.files.bundle().builtInPlugInsPath() + QStringLiteral("/QBFinderSync.appex");
    QCOMPARE(linesOf(log), runs ? QStringList{QStringLiteral("-a ") + extension} : QStringList());
    QCOMPARE(QFile::exists(file), exists);
    if (exists) {
        QVariantMap after = before;
        if (runs)
            after.insert(QStringLiteral("first"), QStringLiteral("yes"));
        QCOMPARE(readDictionary(file).value_or(QVariantMap()), after);
        QVERIFY(!registration.registerOnce());
    }
}

void TestStartUpSteps::updateFlag_data()
{
    QTest::addColumn<QByteArray>("before"); // null: no file
    QTest::addColumn<bool>("written");
    const QVariantMap state{{QStringLiteral("ShownUpdateWindow"), true},
                            {QStringLiteral("other"), QStringLiteral("kept")}};
    QTest::newRow("set") << platform::PropertyList::serialize(state) << true;
    QTest::newRow("garbage") << QByteArray("garbage") << false;
    QTest::newRow("missing") << QByteArray() << false;
}

void TestStartUpSteps::updateFlag()
{
    QFETCH(QByteArray, before);
    QFETCH(bool, written);
    ShellFixture fixture;
    const QString name = QStringLiteral("AppUpdate.plist");
    if (!before.isNull())
        fixture.files.addResource(name, before);
    shell::setShownUpdateWindow(fixture.files.resource(name), false);
    shell::setShownUpdateWindow({}, false);
    QCOMPARE(QFile::exists(fixture.files.resource(name)), !before.isNull());
    const QVariantMap after = readDictionary(fixture.files.resource(name)).value_or(QVariantMap());
    QCOMPARE(after.value(QStringLiteral("ShownUpdateWindow")), written ? QVariant(false) : QVariant());
    QCOMPARE(after.value(QStringLiteral("other")).toString(), written ? QStringLiteral("kept") : QString());
}

void TestStartUpSteps::fontInstallation_data()
{
    QTest::addColumn<QByteArray>("installed"); // null: no file
    QTest::addColumn<QByteArray>("bundled");
    QTest::addColumn<bool>("waits");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("same") << QByteArray("font") << QByteArray("font") << false << QByteArray("font");
    QTest::newRow("different") << QByteArray("old font") << QByteArray("font") << true << QByteArray("font");
    QTest::newRow("missing") << QByteArray() << QByteArray("font") << true << QByteArray("font");
    QTest::newRow("no bundled copy") << QByteArray("font") << QByteArray() << true << QByteArray("font");
    QTest::newRow("neither") << QByteArray() << QByteArray() << true << QByteArray();
}

void TestStartUpSteps::fontInstallation()
{
    QFETCH(QByteArray, installed);
    QFETCH(QByteArray, bundled);
    QFETCH(bool, waits);
    QFETCH(QByteArray, after);
    ShellFixture fixture;
    const QString resource = QStringLiteral("SourceHanSansSC/SourceHanSansSC-Normal.otf");
    if (!bundled.isNull())
        fixture.files.addResource(resource, bundled);
    fixture.files.addResource(QStringLiteral("installFonts.sh"),
                              "cp \"$1/SourceHanSansSC/SourceHanSansSC-Normal.otf\" '" +
                                  fixture.host.folders.fonts().toUtf8() + "' 2> /dev/null");
    QDir().mkpath(fixture.host.folders.fonts());
    const shell::FontSetup::Places places = shell::FontSetup::placesFor(fixture.files.bundle(), fixture.host.folders);
    QFile file(places.installed);
    if (!installed.isNull()) {
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(installed);
        file.close();
    }
    QCOMPARE(shell::FontSetup::installFonts(places), waits);
    QCOMPARE(file.exists(), !after.isNull());
    if (file.open(QIODevice::ReadOnly))
        QCOMPARE(file.readAll(), after);
}

/// Without a script and without the font the start waits, until the font turns up by other means; then it goes on once.
void TestStartUpSteps::fontPoll()
{
    ShellFixture fixture;
    std::atomic<int> asked = 0;
    std::atomic<bool> there = false;
    const auto names = [&] {
        ++asked;
        return there ? QStringList{QStringLiteral("SourceHanSansSC-Normal")} : QStringList{QStringLiteral("Other")};
    };
    int continued = 0;
    shell::FontSetup fonts(shell::FontSetup::placesFor(fixture.files.bundle(), fixture.host.folders), names,
                           std::chrono::milliseconds(10));
    fonts.prepare([&] { ++continued; });
    QTRY_VERIFY(asked > 2);
    QCOMPARE(continued, 0);
    there = true;
    QTRY_COMPARE(continued, 1);
    const int askedUntilThen = asked;
    QTest::qWait(50);
    QCOMPARE(asked.load(), askedUntilThen);
    QCOMPARE(continued, 1);
}

void TestStartUpSteps::volumes_data()
{
    QTest::addColumn<QString>("asked");
    QTest::addColumn<bool>("mounted");
    QTest::addColumn<QStringList>("detached");
    const QString quillbox = QStringLiteral("/Volumes/Quillbox");
    const QString second = QStringLiteral("/Volumes/Quillbox 1");
    QTest::newRow("exact") << quillbox << true << QStringList{quillbox, second};
    QTest::newRow("part of two") << QStringLiteral("Quillbox") << false << QStringList{quillbox, second};
    QTest::newRow("the second") << second << true << QStringList{second};
    QTest::newRow("other case") << QStringLiteral("/volumes/quillbox") << false << QStringList();
    QTest::newRow("nothing") << QString() << false << QStringList();
}

void TestStartUpSteps::volumes()
{
    QFETCH(QString, asked);
    QFETCH(bool, mounted);
    QFETCH(QStringList, detached);
    for (const bool force : {false, true}) {
        FakeVolumes fake;
        fake.mounted = {QStringLiteral("/"), QStringLiteral("/Volumes/Quillbox"),
                        QStringLiteral("/Volumes/Quillbox 1")};
        const shell::VolumeControl control(fake);
        QCOMPARE(control.checkIfVolumeMounted(asked), mounted);
        QVERIFY(fake.unmounted.isEmpty());
        QCOMPARE(control.checkIfVolumeMountedAndUnmount(asked, force), !detached.isEmpty());
        QList<std::pair<QString, bool>> expected;
        for (const QString &path : detached)
            expected.append({path, force});
        QCOMPARE(fake.unmounted, expected);
    }
}

REGISTER_TEST(TestStartUpSteps)
#include "TestStartUpSteps.moc"
