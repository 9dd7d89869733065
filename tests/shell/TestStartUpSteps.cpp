#include "ShellFixture.h"

#include "platform/PropertyList.h"
#include "shell/FirstRunRegistration.h"
#include "shell/FontSetup.h"
#include "shell/SingleInstance.h"
#include "shell/VolumeControl.h"
#include "support/Cases.h"
#include "support/Files.h"
#include "support/TestMain.h"

#include <QTest>

#include <atomic>
#include <utility>

using namespace testing;
using namespace Qt::StringLiterals;
using shell::SingleInstance::OtherCopies;

namespace
{
using Copy = std::pair<qint64, qint64>; ///< process id and start time
constexpr Copy Self{10, 100};

struct Copies {
    const char *name;
    QString identifier;
    QList<Copy> running;
    OtherCopies found;
};
const QString Own = u"com.velto.quillbox"_s;
const QList<Copies> CopyCases{{"alone", Own, {Self}, OtherCopies::None},
                              {"not even listed", Own, {}, OtherCopies::None},
                              {"older", Own, {Self, {9, 99}}, OtherCopies::Older},
                              {"older, numbered higher", Own, {{11, 99}, Self}, OtherCopies::Older},
                              {"younger, numbered lower", Own, {Self, {9, 101}}, OtherCopies::Younger},
                              {"same instant, smaller number", Own, {Self, {9, 100}}, OtherCopies::Older},
                              {"same instant, larger number", Own, {Self, {11, 100}}, OtherCopies::Younger},
                              {"one of each", Own, {{11, 101}, Self, {12, 7}}, OtherCopies::Older},
                              {"self unseen", Own, {{11, 101}}, OtherCopies::Older},
                              {"no identifier", {}, {{11, 1}}, OtherCopies::None}};

struct FirstRun {
    const char *name;
    QVariantMap before;
    bool exists;
    bool runs;
};
const QList<FirstRun> FirstRuns{{"first run", {{u"themeColor"_s, u"0x112233"_s}}, true, true},
                                {"later run", {{u"first"_s, u"anything"_s}}, true, false},
                                {"later run, told otherwise", {{u"first"_s, true}}, true, false},
                                {"no branding file", {}, false, true}};

struct FontFiles {
    const char *name;
    QByteArray installed; ///< null: no file
    QByteArray bundled;
    bool waits;
    QByteArray after;
};
const QList<FontFiles> FontCases{{"same", "font", "font", false, "font"},
                                 {"different", "old font", "font", true, "font"},
                                 {"missing", {}, "font", true, "font"},
                                 {"no bundled copy", "font", {}, true, "font"},
                                 {"neither", {}, {}, true, {}}};

struct VolumeQuestion {
    const char *name;
    QString asked;
    bool mounted;
    QStringList detached;
};
const QString First = u"/Volumes/Quillbox"_s;
const QString Second = u"/Volumes/Quillbox 1"_s;
const QList<VolumeQuestion> VolumeQuestions{{"exact", First, true, {First, Second}},
                                            {"part of two", u"Quillbox"_s, false, {First, Second}},
                                            {"the second", Second, true, {Second}},
                                            {"other case", u"/volumes/quillbox"_s, false, {}},
                                            {"nothing", {}, false, {}}};
} // namespace

/// The single steps of the start, each by itself.
class TestStartUpSteps : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void otherCopy_data() { addCases(CopyCases); }
    void otherCopy();
    void registration_data() { addCases(FirstRuns); }
    void registration();
    void fontInstallation_data() { addCases(FontCases); }
    void fontInstallation();
    void fontPoll();
    void volumes_data() { addCases(VolumeQuestions); }
    void volumes();
};

void TestStartUpSteps::otherCopy()
{
    const auto &[name, identifier, running, found] = currentCase(CopyCases);
    FakeWorkspace workspace;
    workspace.running = {{u"com.velto.FUSEService"_s, 50, 1}};
    for (const auto &[processId, startTime] : running)
        workspace.running.append({identifier, processId, startTime});
    QCOMPARE(shell::SingleInstance::otherCopies(workspace, identifier, Self.first), found);
}

void TestStartUpSteps::registration()
{
    const auto &[name, before, exists, runs] = currentCase(FirstRuns);
    ShellFixture fixture;
    const QString file = fixture.files.resource(u"QBOEM.plist"_s);
    if (exists)
        QVERIFY(platform::PropertyList::write(file, before));
    const QString log = fixture.folder.filePath(u"runs"_s);
    fixture.host.scripts.extension = fixture.folder.filePath(u"tool"_s);
    QVERIFY(
        writeFile(fixture.host.scripts.extension, "#!/bin/sh\necho \"$@\" >> " + log.toUtf8() + "\nexit 3\n", 0700));
    const shell::FirstRunRegistration registration(fixture.host.scripts, fixture.files.bundle(), Branding(file));
    QCOMPARE(registration.registerOnce(), runs);
    const QString extension = fixture.files.bundle().builtInPlugInsPath() + u"/QBFinderSync.appex"_s;
    QCOMPARE(QString::fromUtf8(contentOf(log)), runs ? u"-a "_s + extension + u'\n' : QString());
    if (exists) {
        QVariantMap after = before;
        if (runs)
            after.insert(u"first"_s, u"yes"_s);
        QCOMPARE(platform::PropertyList::readDictionary(file).value_or(QVariantMap()), after);
        QVERIFY(!registration.registerOnce());
    }
    QCOMPARE(QFile::exists(file), exists);
}

void TestStartUpSteps::fontInstallation()
{
    const auto &[name, installed, bundled, waits, after] = currentCase(FontCases);
    ShellFixture fixture;
    const QString resource = u"SourceHanSansSC/SourceHanSansSC-Normal.otf"_s;
    if (!bundled.isNull())
        fixture.files.addResource(resource, bundled);
    fixture.files.addResource(u"installFonts.sh"_s, "cp \"$1/" + resource.toUtf8() + "\" '" +
                                                        fixture.host.folders.fonts().toUtf8() + "' 2> /dev/null");
    QDir().mkpath(fixture.host.folders.fonts());
    const shell::FontSetup::Places places = shell::FontSetup::placesFor(fixture.files.bundle(), fixture.host.folders);
    if (!installed.isNull())
        QVERIFY(writeFile(places.installed, installed));
    QCOMPARE(shell::FontSetup::installFonts(places), waits);
    QCOMPARE(QFile::exists(places.installed), !after.isNull());
    QCOMPARE(contentOf(places.installed), after);
}

/// Without a script and without the font the start waits, until the font turns up by other means; then it goes on once.
void TestStartUpSteps::fontPoll()
{
    ShellFixture fixture;
    std::atomic<int> asked = 0;
    std::atomic<bool> there = false;
    const auto names = [&] {
        ++asked;
        return QStringList{there ? u"SourceHanSansSC-Normal"_s : u"Other"_s};
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

void TestStartUpSteps::volumes()
{
    const auto &[name, asked, mounted, detached] = currentCase(VolumeQuestions);
    for (const bool force : {false, true}) {
        FakeVolumes fake;
        fake.mounted = {u"/"_s, First, Second};
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
