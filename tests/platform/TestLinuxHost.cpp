#include "platform/linux/LinuxDeviceIdentity.h"
#include "platform/linux/LinuxFolders.h"
#include "platform/linux/LinuxReducedMotion.h"
#include "platform/linux/LinuxScripts.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/MountTable.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/Variable.h"

#include <QTemporaryDir>

#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;
using testing::Variable;

/// What the system tells: mounts, routes, folders, the desktop's wishes.
class TestLinuxHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsMountTable_data()
    {
        const testing::Rows<QByteArray, QStringList> row("table", "points");
        const QByteArray before("42 27 0:39 / ");
        const QByteArray after(" rw,relatime shared:1 - fuse.x y rw\n");
        row("nothing", "", {});
        row("plain", before + "/" + after + before + "/Volumes/Quillbox" + after, {"/", "/Volumes/Quillbox"});
        row("mounted over", before + "/a" + after + before + "/a" + after, {"/a"});
        row("escapes", before + "/FUSE\\040for\\040macOS\\011\\012\\134x" + after, {"/FUSE for macOS\t\n\\x"});
        row("not an escape", before + "/a\\04" + after + before + "/b\\089" + after, {"/a\\04", "/b\\089"});
        row("no ASCII", before + "/\xe4\xb8\xad" + after, {"/中"});
        row("damaged", "\n \n42\n42 27 0:39 /\n42 27 0:39 / relative - x\n", {});
    }
    void readsMountTable()
    {
        QFETCH(QByteArray, table);
        QTEST(mountPoints(table), "points");
    }

    void seesAndEndsMounts()
    {
        QTemporaryDir resources;
        const QString record = resources.filePath(u"record"_s);
        QVERIFY(testing::writeFile(resources.filePath(u"linux/hdiutil"_s),
                                   "#!/bin/sh\nprintf '%s|' \"$@\" >>'" + QFile::encodeName(record) + "'\n", 0755));
        const LinuxScripts scripts(resources.path());
        LinuxVolumes volumes(scripts);
        QVERIFY(volumes.mountedPaths().contains(u"/proc"_s));
        volumes.unmount(u"/Volumes/a b;c"_s, true);
        volumes.unmount(u"/x"_s, false);
        QCOMPARE(testing::contentOf(record), "detach|-force|/Volumes/a b;c|detach|/x|"_ba);
    }

    void readsDefaultRoute()
    {
        const QByteArray head("Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n");
        const QByteArray local("eth1\t0000A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n");
        const QByteArray wireless("wlan0\t00000000\t0100A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n");
        const QByteArray wired("eth0\t00000000\t0100A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n");
        const QByteArray half("tun0\t00000000\t00000000\t0003\t0\t0\t0\t00000080\t0\t0\t0\n");
        const QByteArray down("eth2\t00000000\t0100A8C0\t0002\t0\t0\t0\t00000000\t0\t0\t0\n");
        QCOMPARE(defaultRouteInterface(head + local + half + down), QByteArray());
        QCOMPARE(defaultRouteInterface(head + wireless + local + wired), "eth0"_ba);
        QCOMPARE(defaultRouteInterface("garbage\n\n\t\t\n"), QByteArray());
        const QByteArray address = LinuxDeviceIdentity().hardwareAddress();
        QVERIFY(address.isEmpty() || address.size() == 6);
    }

    void findsFolders()
    {
        const Variable home("HOME", u"/h"_s);
        const LinuxFolders folders;
        {
            const Variable configuration("XDG_CONFIG_HOME", u"/c"_s);
            const Variable data("XDG_DATA_HOME", u"/d"_s);
            const Variable cache("XDG_CACHE_HOME", u"/e"_s);
            const Variable volumes("QUILLBOX_VOLUMES", u"/proc/self/root//v/"_s);
            QCOMPARE(folders.userDefaultsFile(), u"/c/com.velto.quillbox.plist"_s);
            QCOMPARE(folders.library(), u"/d/com.velto.quillbox/Library"_s);
            QCOMPARE(folders.fonts(), u"/d/fonts"_s);
            QCOMPARE(folders.caches(), u"/e/com.velto.quillbox"_s);
            QCOMPARE(folders.volumes(), u"/v"_s);
        }
        for (const QString &unset : {QString(), u""_s, u"relative"_s}) {
            const Variable configuration("XDG_CONFIG_HOME", unset);
            const Variable data("XDG_DATA_HOME", unset);
            const Variable cache("XDG_CACHE_HOME", unset);
            const Variable volumes("QUILLBOX_VOLUMES", unset);
            QCOMPARE(folders.userDefaultsFile(), u"/h/.config/com.velto.quillbox.plist"_s);
            QCOMPARE(folders.library(), u"/h/.local/share/com.velto.quillbox/Library"_s);
            QCOMPARE(folders.caches(), u"/h/.cache/com.velto.quillbox"_s);
            QCOMPARE(folders.volumes(), u"/Volumes"_s);
        }
        const Variable none("HOME", QString());
        QVERIFY(folders.home().startsWith(u'/'));
    }

    void temporaryFolderIsPrivate()
    {
        QTemporaryDir base;
        const QString runtime = base.filePath(u"run"_s);
        const Variable fallback("TMPDIR", base.path());
        const Variable variable("XDG_RUNTIME_DIR", runtime);
        const QString own = runtime + "/com.velto.quillbox"_L1;
        const QString below = base.path() + u"/com.velto.quillbox-%1"_s.arg(::geteuid());
        const LinuxFolders folders;
        QCOMPARE(folders.temporary(), below); // no runtime folder
        QCOMPARE(::mkdir(QFile::encodeName(runtime).constData(), 0700), 0);
        QCOMPARE(folders.temporary(), own);
        QCOMPARE(::chmod(QFile::encodeName(own).constData(), 0755), 0); // made too open by hand
        QCOMPARE(folders.temporary(), own);
        QCOMPARE(testing::modeOf(own), 0700u);
        // Others may write to the runtime folder, or a link stands in the place: neither is trusted.
        QCOMPARE(::chmod(QFile::encodeName(runtime).constData(), 0777), 0);
        QCOMPARE(folders.temporary(), below);
        QCOMPARE(::rmdir(QFile::encodeName(below).constData()), 0);
        QVERIFY(QFile::link(own, below));
        QVERIFY(folders.temporary().isNull());
    }

    void desktopsWishForLittleMotion_data()
    {
        const testing::Rows<QString, QString, QVariant, bool> row("group", "key", "value", "wanted");
        const QString common = u"org.freedesktop.appearance"_s;
        const QString gnome = u"org.gnome.desktop.interface"_s;
        const QString plasma = u"org.kde.kdeglobals.KDE"_s;
        row("common", common, "reduced-motion", 1U, true);
        row("common, no preference", common, "reduced-motion", 0U, false);
        row("animations off", gnome, "enable-animations", false, true);
        row("animations on", gnome, "enable-animations", true, false);
        row("a key of another type", gnome, "enable-animations", u""_s, false);
        row("at once", plasma, "AnimationDurationFactor", u"0"_s, true);
        row("slower", plasma, "AnimationDurationFactor", u"1.5"_s, false);
        row("not told", gnome, "font-name", u"0"_s, false);
    }
    void desktopsWishForLittleMotion()
    {
        QFETCH(QString, group);
        QFETCH(QString, key);
        QFETCH(QVariant, value);
        QTEST(LinuxReducedMotion::asksForLittleMotion({{group, {{key, value}}}}), "wanted");
    }
};

REGISTER_TEST(TestLinuxHost)
#include "TestLinuxHost.moc"
