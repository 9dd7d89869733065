#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "shell/FirstRunRegistration.h"
#include "shell/FontSetup.h"
#include "shell/SingleInstance.h"
#include "shell/VolumeControl.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <atomic>
#include <utility>

using namespace testing;
using platform::PropertyList::readDictionary;

namespace
{
using Copy = std::pair<qint64, qint64>; ///< process id and start time

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
    void fontInstallation_data();
    void fontInstallation();
    void fontPoll();
    void volumes_data();
    void volumes();
};

void TestStartUpSteps::otherCopy_data()
{
    using shell::SingleInstance::OtherCopies;
    QTest::addColumn<QString>("own");
    QTest::addColumn<QList<Copy>>("copies");
    QTest::addColumn<OtherCopies>("found");
    const QString name = QStringLiteral("com.velto.quillbox");
    const Copy self{10, 100};
    QTest::newRow("alone") << name << QList<Copy>{self} << OtherCopies::None;
    QTest::newRow("not even listed") << name << QList<Copy>{} << OtherCopies::None;
    QTest::newRow("older") << name << QList<Copy>{self, {9, 99}} << OtherCopies::Older;
    QTest::newRow("older, numbered higher") << name << QList<Copy>{{11, 99}, self} << OtherCopies::Older;
    QTest::newRow("younger, numbered lower") << name << QList<Copy>{self, {9, 101}} << OtherCopies::Younger;
    QTest::newRow("same instant, smaller number") << name << QList<Copy>{self, {9, 100}} << OtherCopies::Older;
    QTest::newRow("same instant, larger number") << name << QList<Copy>{self, {11, 100}} << OtherCopies::Younger;
    QTest::newRow("one of each") << name << QList<Copy>{{11, 101}, self, {12, 7}} << OtherCopies::Older;
    QTest::newRow("self unseen") << name << QList<Copy>{{11, 101}} << OtherCopies::Older;
    QTest::newRow("no identifier") << QString() << QList<Copy>{{11, 1}} << OtherCopies::None;
}

void TestStartUpSteps::otherCopy()
{
    QFETCH(QString, own);
    QFETCH(QList<Copy>, copies);
    QFETCH(shell::SingleInstance::OtherCopies, found);
    FakeWorkspace workspace;
    workspace.running = {{QStringLiteral("com.velto.FUSEService"), 50, 1}};
    for (const auto &[processId, startTime] : copies)
        workspace.running.append({own, processId, startTime});
    QCOMPARE(shell::SingleInstance::otherCopies(workspace, own, 10), found);
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
