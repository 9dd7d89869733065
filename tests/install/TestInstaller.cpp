#include "InstallScene.h"
#include "platform/Bundle.h"
#include "platform/Task.h"
#include "support/Files.h"
#include "support/FullDisk.h"
#include "support/Rows.h"
#include "support/TestMain.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

namespace
{

/// What is wrong with the image or the request, done before the installation begins.
struct Fault {
    std::function<void(const InstallScene &)> inContent = [](const InstallScene &) {};
    std::function<void(UpdateRequest *)> inRequest = [](UpdateRequest *) {};
};

QString inContents(const InstallScene &scene, const char *name)
{
    return scene.application() + "/Contents/"_L1 + QLatin1String(name);
}

void setInfo(const InstallScene &scene, const QByteArray &from, const QByteArray &to)
{
    const QString file = inContents(scene, "Info.plist");
    QByteArray text = contentOf(file);
    QVERIFY(text.contains(from) && writeFile(file, text.replace(from, to)));
    writeCodeResources(scene.application());
}

} // namespace

Q_DECLARE_METATYPE(Fault)

class TestInstaller : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installs_data()
    {
        const Rows<bool> row("mounted");
        row("copied image", false);
        row("mounted image", true);
    }
    void installs()
    {
        QFETCH(bool, mounted);
        InstallScene scene(mounted ? InstallScene::Images::Mounted : InstallScene::Images::Copied);
        scene.attachImage();
        const auto manager = platform::Task::launch(platform::Bundle(scene.bundle).executablePath(), {u"manager"_s});
        QVERIFY(Installer(scene.request(), scene.surroundings()).run());
        QVERIFY(!manager->isRunning());
        QCOMPARE(scene.steps.join(u','),
                 u"manager ended,checked,folder made,copied,compared,exchanged,detached,started,"
                 "confirmed,stayed,done"_s);
        QCOMPARE(scene.runningVersion(), u"1.1.0"_s);
        scene.checkTidy();
        QVERIFY(QFile::exists(scene.image));
        QCOMPARE(QFile::symLinkTarget(scene.bundle + "/Contents/link"_L1),
                 scene.bundle + "/Contents/Resources/a name"_L1);
    }

    void refuses_data();
    void refuses()
    {
        QFETCH(Fault, fault);
        InstallScene scene;
        fault.inContent(scene);
        scene.attachImage();
        UpdateRequest request = scene.request();
        fault.inRequest(&request);
        QVERIFY(!Installer(request, scene.surroundings()).run());
        const QString steps = scene.steps.join(u',');
        QVERIFY2(steps.endsWith("refused"_L1) && !steps.contains("exchanged"_L1), qPrintable(steps));
        QTEST(steps.contains("checked"_L1), "copied");
        QCOMPARE(scene.runningVersion(), u"1.0.0"_s);
        QCOMPARE(scene.leftBeside(), QStringList());
        QCOMPARE(scene.attached().size(), request.image == scene.image ? 0 : 1);
    }

    void takesBackWhatDoesNotWork_data()
    {
        const Rows<QByteArray> row("behaviour");
        for (const char *behaviour : {"crashes", "hangs", "leaves"})
            row(behaviour);
    }
    void takesBackWhatDoesNotWork()
    {
        QFETCH(QByteArray, behaviour);
        InstallScene scene;
        scene.setNewBehaviour(behaviour);
        scene.attachImage();
        QVERIFY(!Installer(scene.request(), scene.surroundings()).run());
        QCOMPARE(scene.steps.last(), u"rolled back"_s);
        QCOMPARE(scene.runningVersion(), u"1.0.0"_s);
        scene.checkTidy();
    }

    void survivesAFullDisk()
    {
        InstallScene scene;
        constexpr qsizetype size = 8 * 1024 * 1024; // more than the program that stands for the client has
        QVERIFY(writeFile(inContents(scene, "large"), QByteArray(size, 'x')));
        writeCodeResources(scene.application());
        scene.attachImage();
        {
            const testing::FullDisk disk(size / 2);
            QVERIFY(!Installer(scene.request(), scene.surroundings()).run());
        }
        QCOMPARE(scene.steps.join(u','), u"manager ended,checked,folder made,refused"_s);
        QCOMPARE(scene.runningVersion(), u"1.0.0"_s);
        scene.checkTidy();
    }

    void startsAgainWhatItMayNotReplace()
    {
        InstallScene scene;
        scene.attachImage();
        const QByteArray parent = QFile::encodeName(QFileInfo(scene.bundle).path());
        const bool isRoot = ::geteuid() == 0; // who may write everywhere
        constexpr uid_t another = 1;
        QCOMPARE(isRoot ? ::chown(QFile::encodeName(scene.bundle).constData(), another, another)
                        : ::chmod(parent.constData(), 0555),
                 0);
        QVERIFY(!Installer(scene.request(), scene.surroundings()).run());
        ::chmod(parent.constData(), 0755);
        QCOMPARE(scene.runningVersion(), u"1.0.0"_s);
        scene.checkTidy();
    }

    void leavesARunningManagerAlone()
    {
        InstallScene scene;
        scene.attachImage();
        QVERIFY(scene.client().start());
        QVERIFY(!Installer(scene.request(), scene.surroundings()).run());
        QCOMPARE(scene.steps, QStringList(u"refused"_s));
        QCOMPARE(scene.runningVersion(), u"1.0.0"_s);
        QVERIFY(scene.attached().isEmpty());
    }
};

void TestInstaller::refuses_data()
{
    const Rows<Fault, bool> row("fault", "copied"); // some are found out only in the copy
    const auto content = [&](const char *name, bool copied, std::function<void(const InstallScene &)> spoil) {
        row(name, Fault{.inContent = std::move(spoil)}, copied);
    };
    const auto wanted = [&](const char *name, std::function<void(UpdateRequest *)> spoil) {
        row(name, Fault{.inRequest = std::move(spoil)}, false);
    };
    content("another product", false, [](auto &scene) { setInfo(scene, "com.velto.quillbox", "com.velto.other"); });
    content("older", false, [](auto &scene) { setInfo(scene, "1.1.0", "0.9.9"); });
    content("without version", false, [](auto &scene) { setInfo(scene, "1.1.0", "new"); });
    content("executable elsewhere", false, [](auto &scene) { setInfo(scene, ">Quillbox<", ">../../x<"); });
    content("no executable", false, [](auto &scene) { QFile::remove(inContents(scene, "MacOS/Quillbox")); });
    content("not executable", false,
            [](auto &scene) { QVERIFY(writeFile(inContents(scene, "MacOS/Quillbox"), "x", 0644)); });
    content("empty list", true,
            [](auto &scene) { QVERIFY(writeFile(inContents(scene, "_CodeSignature/CodeResources"), "")); });
    content("changed file", true,
            [](auto &scene) { QVERIFY(writeFile(inContents(scene, "Resources/a name"), "another")); });
    content("missing file", true, [](auto &scene) { QFile::remove(inContents(scene, "Resources/a name")); });
    content("file too many", true, [](auto &scene) { QVERIFY(writeFile(inContents(scene, "MacOS/.hidden"), "x")); });
    content("other link", true, [](auto &scene) {
        QFile::remove(inContents(scene, "link"));
        QVERIFY(QFile::link(u"Resources"_s, inContents(scene, "link")));
    });
    content("link leading out", true,
            [](auto &scene) { QVERIFY(QFile::link(u"/etc/passwd"_s, inContents(scene, "out"))); });
    content("pipe", true,
            [](auto &scene) { QCOMPARE(::mkfifo(QFile::encodeName(inContents(scene, "pipe")).constData(), 0600), 0); });
    content("missing library", true, [](auto &scene) { scene.setNewBehaviour("foreign"); });
    content("link to an application", false, [](auto &scene) {
        QVERIFY(QDir().rename(scene.application(), scene.content() + "/x"_L1));
        QVERIFY(QFile::link(u"x"_s, scene.application()));
    });
    content("two applications", false, [](auto &scene) { QVERIFY(QDir().mkdir(scene.content() + "/A.app"_L1)); });
    wanted("nothing attached", [](auto *request) { request->newApplication = u"/"_s; });
    wanted("not in the image", [](auto *request) { request->newApplication = request->bundle; });
    wanted("with dots", [](auto *request) { request->newApplication += "/../Quillbox.app"_L1; });
    wanted("another image", [](auto *request) { request->image = request->bundle + "/Contents/Info.plist"_L1; });
}

REGISTER_TEST(TestInstaller)
#include "TestInstaller.moc"
