#include "InstallScene.h"
#include "install/InstallLock.h"
#include "install/Leftovers.h"
#include "platform/Bundle.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"

using namespace install;
using namespace testing;
using namespace Qt::StringLiterals;

/// An installer that is killed after one of its steps, and who tidies up after it.
class TestKilledInstaller : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void isTakenUpAgain_data()
    {
        const Rows<int, QByteArray, QString> row("step", "behaviour", "version");
        row("copied", int(Step::Copied), "works", "1.0.0");
        row("exchanged", int(Step::Exchanged), "works", "1.1.0");
        row("exchanged, does not run", int(Step::Exchanged), "crashes", "1.0.0");
        row("detached, does not run", int(Step::Detached), "crashes", "1.0.0");
        row("started, does not run", int(Step::Started), "crashes", "1.0.0");
        row("rolled back", int(Step::RolledBack), "crashes", "1.0.0");
    }
    void isTakenUpAgain()
    {
        InstallScene scene;
        kill(scene);
        Installer(scene.request(), scene.surroundings()).resume();
        QTEST(scene.runningVersion(), "version");
        scene.checkTidy();
    }

    void nextClientTidiesUp_data()
    {
        const Rows<int, QByteArray, QString> row("step", "behaviour", "version");
        row("copied", int(Step::Copied), "works", "1.0.0");
        row("exchanged", int(Step::Exchanged), "works", "1.1.0");
        row("rolled back", int(Step::RolledBack), "crashes", "1.0.0");
    }
    void nextClientTidiesUp()
    {
        InstallScene scene;
        kill(scene);
        QTEST(scene.installedVersion(), "version");
        clearLeftovers(scene.host(), platform::Bundle(scene.bundle));
        QTEST(scene.installedVersion(), "version");
        scene.checkTidy();
    }

    void nextClientIsWatched()
    {
        InstallScene scene;
        const auto watch = [&](const QString &helper) {
            QVERIFY(writeFile(helper, "#!/bin/sh\necho \"$@\" >\"$0.asked\"\n", 0755));
            watchTrial(scene.host(), platform::Bundle(scene.bundle), helper);
        };
        watch(scene.path(u"nothing on trial"_s));
        scene.attachImage();
        QVERIFY(scene.killedAfter(Step::Exchanged));
        {
            const InstallLock lock(scene.host().folders.caches(), std::chrono::milliseconds(0));
            watch(scene.path(u"installer at work"_s));
        }
        const QString helper = scene.path(u"needed"_s);
        watch(helper);
        QTRY_COMPARE(contentOf(helper + ".asked"_L1), scene.bundle.toUtf8() + '\n');
        QCOMPARE(QDir(scene.path({})).entryList({u"*.asked"_s}).size(), 1);
    }

    void clientOnlyConfirmsWhileAnInstallerWorks()
    {
        InstallScene scene;
        scene.attachImage();
        QVERIFY(scene.killedAfter(Step::Exchanged));
        const InstallLock lock(scene.host().folders.caches(), std::chrono::milliseconds(0));
        QVERIFY(lock.isHeld());
        clearLeftovers(scene.host(), platform::Bundle(scene.bundle), std::chrono::milliseconds(100));
        QVERIFY(!QFile::exists(scene.bundle + "/Contents/update-pending"_L1));
        QCOMPARE(scene.leftBeside().size(), 1);
        QCOMPARE(scene.attached().size(), 1);
        QVERIFY(!Installer(scene.request(), scene.surroundings()).run()); // gives up when the lock does not come free
        QCOMPARE(scene.leftBeside().size(), 1);
    }

    void otherImagesStay()
    {
        InstallScene scene;
        scene.attachImage();
        const QString own = scene.path(u"own.dmg"_s);
        QVERIFY(QFile::copy(scene.image, own));
        scene.attach(own);
        clearLeftovers(scene.host(), platform::Bundle(scene.bundle));
        QCOMPARE(scene.attached().size(), 1);
        QCOMPARE(scene.attached().first().image, own);
    }

private:
    using Step = Installer::Step;

    /// The installer of this row, up to its end.
    static void kill(InstallScene &scene)
    {
        QFETCH(int, step);
        QFETCH(QByteArray, behaviour);
        scene.setNewBehaviour(behaviour);
        scene.attachImage();
        QVERIFY(scene.killedAfter(static_cast<Step>(step)));
    }
};

REGISTER_TEST(TestKilledInstaller)
#include "TestKilledInstaller.moc"
