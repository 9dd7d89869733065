#include "InstallScene.h"
#include "install/InstallLock.h"
#include "install/Leftovers.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/Task.h"
#include "support/TestMain.h"

#include <QFile>
#include <QTest>

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

/// An installer that is killed after one of its steps, and who tidies up after it.
class TestKilledInstaller : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        if (!imagesCanBeAttached())
            QSKIP("this user may not mount images");
    }

    void isTakenUpAgain_data()
    {
        addColumns();
        addStep(Step::Copied, "works", "1.0.0");
        addStep(Step::Exchanged, "works", "1.1.0");
        // The new version cannot run: the old one comes back.
        for (const Step step : {Step::Exchanged, Step::Detached, Step::Started, Step::RolledBack})
            addStep(step, "crashes", "1.0.0");
    }
    void isTakenUpAgain()
    {
        InstallScene scene;
        prepare(scene);
        Installer(scene.request(), scene.surroundings()).resume();
        QTEST(scene.runningVersion(), "version");
        checkNothingIsLeft(scene);
    }

    void nextClientTidiesUp_data()
    {
        addColumns();
        addStep(Step::Copied, "works", "1.0.0");
        addStep(Step::Exchanged, "works", "1.1.0");
        addStep(Step::RolledBack, "crashes", "1.0.0");
    }
    void nextClientTidiesUp()
    {
        InstallScene scene;
        prepare(scene);
        QTEST(scene.installedVersion(), "version");
        clearLeftovers(platform::host(), platform::Bundle(scene.bundle));
        QTEST(scene.installedVersion(), "version");
        checkNothingIsLeft(scene);
    }

    void clientOnlyConfirmsWhileAnInstallerWorks()
    {
        InstallScene scene;
        scene.attachImage();
        QVERIFY(scene.killedAfter(Step::Exchanged));
        const InstallLock lock(platform::host().folders.caches(), std::chrono::milliseconds(0));
        QVERIFY(lock.isHeld());
        clearLeftovers(platform::host(), platform::Bundle(scene.bundle), std::chrono::milliseconds(100));
        QVERIFY(!QFile::exists(scene.bundle + "/Contents/update-pending"_L1));
        QCOMPARE(scene.leftBeside().size(), 1);
        QCOMPARE(scene.attached(), 1);
        QVERIFY(!Installer(scene.request(), scene.surroundings()).run()); // gives up when the lock does not come free
        QCOMPARE(scene.leftBeside().size(), 1);
    }

    void otherImagesStay()
    {
        InstallScene scene;
        scene.attachImage();
        const QString own = scene.path(u"own.dmg"_s);
        QVERIFY(QFile::copy(scene.image, own));
        QCOMPARE(platform::runTask(u"hdiutil"_s, {u"attach"_s, own}).status, 0);
        clearLeftovers(platform::host(), platform::Bundle(scene.bundle));
        const QList<AttachedImage> left = scene.surroundings().images.list();
        QCOMPARE(left.size(), 1);
        QCOMPARE(left.first().image, own);
    }

private:
    using Step = Installer::Step;

    static void addColumns()
    {
        QTest::addColumn<int>("step");
        QTest::addColumn<QByteArray>("behaviour");
        QTest::addColumn<QString>("version");
    }
    /// `version`: the one that is there in the end.
    static void addStep(Step step, const char *behaviour, const char *version)
    {
        QTest::addRow("%s, %s", Installer::nameOf(step), behaviour)
            << static_cast<int>(step) << QByteArray(behaviour) << QString::fromLatin1(version);
    }
    /// Brings the scene to the point where the installer of this row is killed.
    static void prepare(InstallScene &scene)
    {
        QFETCH(int, step);
        QFETCH(QByteArray, behaviour);
        const QString application = scene.content() + "/Quillbox.app"_L1;
        writeFile(application + "/Contents/behaviour"_L1, behaviour);
        writeCodeResources(application);
        scene.attachImage();
        QVERIFY(scene.killedAfter(static_cast<Step>(step)));
    }
    static void checkNothingIsLeft(const InstallScene &scene)
    {
        QCOMPARE(scene.leftBeside(), QStringList());
        QVERIFY(!QFile::exists(scene.bundle + "/Contents/update-pending"_L1));
        QCOMPARE(scene.attached(), 0);
    }
};

REGISTER_TEST(TestKilledInstaller)
#include "TestKilledInstaller.moc"
