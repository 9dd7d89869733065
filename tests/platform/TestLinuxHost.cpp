#include "platform/Bundle.h"
#include "platform/HostProcess.h"
#include "platform/PropertyList.h"
#include "platform/Task.h"
#include "platform/linux/LinuxDeviceIdentity.h"
#include "platform/linux/LinuxFolders.h"
#include "platform/linux/LinuxScripts.h"
#include "platform/linux/LinuxSidebarFavorites.h"
#include "platform/linux/LinuxVolumes.h"
#include "platform/linux/LinuxWorkspace.h"
#include "platform/linux/MountTable.h"
#include "platform/linux/PlacesFiles.h"
#include "platform/linux/SessionBus.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTemporaryFile>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;

namespace
{

void write(const QString &path, const QByteArray &content, mode_t mode = 0644)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
    file.close();
    ::chmod(QFile::encodeName(path).constData(), mode);
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Sets a variable of the environment for the length of a test; null unsets it.
class Variable
{
public:
    Variable(const char *variable, const QString &value) : name(variable), before(qgetenv(variable))
    {
        if (value.isNull())
            qunsetenv(name);
        else
            qputenv(name, QFile::encodeName(value));
    }
    ~Variable() { qputenv(name, before); }

private:
    const char *const name;
    const QByteArray before;
};

/// Makes a bundle whose executables are copies of the sleeping program.
QString makeBundle(const QString &path, const QString &identifier)
{
    for (const char *name : {"Main", "Helper"})
        write(path + QStringLiteral("/Contents/MacOS/") + QLatin1String(name), contentOf(QStringLiteral("/bin/sleep")),
              0755);
    write(path + QStringLiteral("/Contents/Resources/a.txt"), "a");
    const QVariantMap info{{QStringLiteral("CFBundleIdentifier"), identifier},
                           {QStringLiteral("CFBundleExecutable"), QStringLiteral("Main")},
                           {QStringLiteral("CFBundleShortVersionString"), QStringLiteral("1.2.3")},
                           {QStringLiteral("Number"), 5}};
    PropertyList::write(path + QStringLiteral("/Contents/Info.plist"), info);
    return path;
}

} // namespace

class TestLinuxHost : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsMountTable_data();
    void readsMountTable();
    void seesRealMounts();
    void detachesWithTheTool();
    void readsDefaultRoute();
    void removesBookmark_data();
    void removesBookmark();
    void removesPlace_data();
    void removesPlace();
    void editsTheFavouritesFiles();
    void findsBundleOfExecutable_data();
    void findsBundleOfExecutable();
    void readsBundle();
    void findsAndEndsApplications();
    void opensOnlySafeAddresses();
    void opensSecretsInAPage();
    void findsFolders();
    void temporaryFolderIsPrivate();
};

void TestLinuxHost::readsMountTable_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<QStringList>("points");
    const auto row = [](const char *name, const QByteArray &table, const QStringList &points) {
        QTest::newRow(name) << table << points;
    };
    const QByteArray before("42 27 0:39 / ");
    const QByteArray after(" rw,relatime shared:1 - fuse.x y rw\n");
    row("nothing", "", {});
    row("plain", before + "/" + after + before + "/Volumes/Quillbox" + after,
        {QStringLiteral("/"), QStringLiteral("/Volumes/Quillbox")});
    row("mounted over", before + "/a" + after + before + "/a" + after, {QStringLiteral("/a")});
    row("escapes", before + "/FUSE\\040for\\040macOS\\011\\012\\134x" + after,
        {QStringLiteral("/FUSE for macOS\t\n\\x")});
    row("not an escape", before + "/a\\04" + after + before + "/b\\089" + after,
        {QStringLiteral("/a\\04"), QStringLiteral("/b\\089")});
    row("no ASCII", before + "/\xe4\xb8\xad" + after, {QStringLiteral("/中")});
    row("damaged", "\n \n42\n42 27 0:39 /\n42 27 0:39 / relative - x\n", {});
}

void TestLinuxHost::readsMountTable()
{
    QFETCH(QByteArray, table);
    QTEST(mountPoints(table), "points");
}

void TestLinuxHost::seesRealMounts()
{
    const LinuxScripts scripts{QString()};
    QVERIFY(LinuxVolumes(scripts).mountedPaths().contains(QStringLiteral("/proc")));
}

void TestLinuxHost::detachesWithTheTool()
{
    QTemporaryDir resources;
    const QString record = resources.filePath(QStringLiteral("record"));
    write(resources.filePath(QStringLiteral("linux/hdiutil")),
          "#!/bin/sh\nprintf '%s|' \"$@\" >>'" + QFile::encodeName(record) + "'\n", 0755);
    const LinuxScripts scripts(resources.path());
    LinuxVolumes volumes(scripts);
    volumes.unmount(QStringLiteral("/Volumes/a b;c"), true);
    volumes.unmount(QStringLiteral("/x"), false);
    QCOMPARE(contentOf(record), QByteArray("detach|-force|/Volumes/a b;c|detach|/x|"));
}

void TestLinuxHost::readsDefaultRoute()
{
    const QByteArray head("Iface\tDestination\tGateway\tFlags\tRefCnt\tUse\tMetric\tMask\tMTU\tWindow\tIRTT\n");
    const QByteArray local("eth1\t0000A8C0\t00000000\t0001\t0\t0\t0\t00FFFFFF\t0\t0\t0\n");
    const QByteArray wireless("wlan0\t00000000\t0100A8C0\t0003\t0\t0\t600\t00000000\t0\t0\t0\n");
    const QByteArray wired("eth0\t00000000\t0100A8C0\t0003\t0\t0\t100\t00000000\t0\t0\t0\n");
    const QByteArray half("tun0\t00000000\t00000000\t0003\t0\t0\t0\t00000080\t0\t0\t0\n");
    const QByteArray down("eth2\t00000000\t0100A8C0\t0002\t0\t0\t0\t00000000\t0\t0\t0\n");
    QCOMPARE(defaultRouteInterface(head + local + half + down), QByteArray());
    QCOMPARE(defaultRouteInterface(head + wireless + local + wired), QByteArray("eth0"));
    QCOMPARE(defaultRouteInterface(head + wireless), QByteArray("wlan0"));
    QCOMPARE(defaultRouteInterface("garbage\n\n\t\t\n"), QByteArray());
    const QByteArray address = LinuxDeviceIdentity().hardwareAddress();
    QVERIFY(address.isEmpty() || address.size() == 6);
}

void TestLinuxHost::removesBookmark_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after"); // empty: left alone
    const auto row = [](const char *name, const QByteArray &before, const QByteArray &after) {
        QTest::newRow(name) << before << after;
    };
    row("empty", "", "");
    row("labelled", "file:///a A\nfile:///x Quillbox\nfile:///b\n", "file:///a A\nfile:///b\n");
    row("named by its address", "file:///Volumes/Quillbox\nfile:///b\n", "file:///b\n");
    row("trailing slash", "x\nfile:///Volumes/Quillbox/\n", "x\n");
    row("percent", "x\nfile:///Quill%62ox\n", "x\n");
    row("first only", "a:/1 Quillbox\na:/2 Quillbox\n", "a:/2 Quillbox\n");
    row("last line unended", "x y\na:/1 Quillbox", "x y\n");
    row("foreign line ends", "x y\r\na:/1 Quillbox\n\n z\xff\n", "x y\r\n\n z\xff\n");
    row("other label", "file:///Volumes/Quillbox Mine\n", "");
    row("other case", "file:///quillbox\nfile:///x quillbox\n", "");
    row("part", "file:///Quillbox%20\nfile:///x My Quillbox\nfile:///x Quillbox \n", "");
}

void TestLinuxHost::removesBookmark()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const auto result = withoutBookmark(before, QStringLiteral("Quillbox"));
    QCOMPARE(result.has_value(), !after.isEmpty());
    QCOMPARE(result.value_or(QByteArray()), after);
}

void TestLinuxHost::removesPlace_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after"); // empty: left alone
    const auto row = [](const char *name, const QByteArray &before, const QByteArray &after) {
        const QByteArray head("<?xml version=\"1.0\"?>\n<!DOCTYPE xbel>\n<xbel xmlns:k=\"x\">\n <info/>");
        const QByteArray tail("\n</xbel>\n");
        QTest::newRow(name) << head + before + tail << (after.isNull() ? QByteArray() : head + after + tail);
    };
    const QByteArray wanted("\n <bookmark href=\"file:///Volumes/Quillbox\">\n  <title>Quillbox</title>\n"
                            "  <info><k:icon name='a>b'/></info>\n </bookmark>");
    const QByteArray other("\n <bookmark href='x'><title>Other</title></bookmark>");
    row("alone", wanted, "");
    row("between others", other + wanted + other, other + other);
    row("first only", wanted + wanted, wanted);
    row("in a folder", "<folder>" + wanted + "</folder>" + other, "<folder></folder>" + other);
    row("entities", "<bookmark><title>Quill&#98;ox</title></bookmark>", "");
    row("character data", "\t<bookmark><title><![CDATA[Quillbox]]></title></bookmark>", "\t");
    row("comment first", "<!--" + wanted + "-->" + wanted, "<!--" + wanted + "-->");
    row("tag in a value", "<bookmark href='/bookmark>'><title>Quillbox</title></bookmark>" + other, other);
    row("empty entries", "<bookmark/><bookmark href='a'/>" + wanted, "<bookmark/><bookmark href='a'/>");
    row("other names", other + "<bookmark><title>quillbox</title></bookmark>", QByteArray());
    row("title deeper", "<bookmark><info><title>Quillbox</title></info></bookmark>", QByteArray());
    row("other element", "<bookmarks><title>Quillbox</title></bookmarks>", QByteArray());
    row("not well-formed", wanted + "<open>", QByteArray());
}

void TestLinuxHost::removesPlace()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    const auto result = withoutPlace(before, QStringLiteral("Quillbox"));
    QCOMPARE(result.value_or(QByteArray()), after);
}

void TestLinuxHost::editsTheFavouritesFiles()
{
    QTemporaryDir folder;
    const Variable configuration("XDG_CONFIG_HOME", folder.filePath(QStringLiteral("c")));
    const Variable data("XDG_DATA_HOME", folder.filePath(QStringLiteral("d")));
    const QString bookmarks = folder.filePath(QStringLiteral("c/gtk-3.0/bookmarks"));
    const QString places = folder.filePath(QStringLiteral("d/user-places.xbel"));
    const LinuxFolders folders;
    LinuxSidebarFavorites sidebar(folders);
    sidebar.removeFirstNamed(QStringLiteral("Quillbox")); // neither file exists
    QVERIFY(!QFile::exists(bookmarks) && !QFile::exists(places));
    write(bookmarks, "a:/1 Quillbox\na:/2\n", 0600);
    write(places, "<xbel><bookmark><title>Quillbox</title></bookmark></xbel>", 0644);
    sidebar.removeFirstNamed(QStringLiteral("Quillbox"));
    QCOMPARE(contentOf(bookmarks), QByteArray("a:/2\n"));
    QCOMPARE(contentOf(places), QByteArray("<xbel></xbel>"));
    QVERIFY(!QFileInfo(bookmarks).permission(QFileDevice::ReadOther));
    QVERIFY(QFileInfo(places).permission(QFileDevice::ReadOther));
}

void TestLinuxHost::findsBundleOfExecutable_data()
{
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QString>("bundle");
    const auto row = [](const char *executable, const char *bundle) {
        QTest::newRow(executable) << QString::fromLatin1(executable) << QString::fromLatin1(bundle);
    };
    row("/x y/Quillbox.app/Contents/MacOS/Quillbox", "/x y/Quillbox.app");
    row("/a.app/Contents/Resources/FUSEService.app/Contents/MacOS/F", "/a.app/Contents/Resources/FUSEService.app");
    row("/usr/bin/x", "");
    row("/Quillbox/Contents/MacOS/Quillbox", "");
    row("/Quillbox.app/Contents/MacOS/sub/Quillbox", "");
    row(".app/Contents/MacOS/x", "");
    row("", "");
}

void TestLinuxHost::findsBundleOfExecutable()
{
    QFETCH(QString, executable);
    QTEST(bundlePathOf(executable), "bundle");
}

void TestLinuxHost::readsBundle()
{
    QTemporaryDir folder;
    const QString path = makeBundle(folder.filePath(QStringLiteral("A b.app")), QStringLiteral("com.example.a"));
    const Bundle bundle(path);
    QCOMPARE(bundle.identifier(), QStringLiteral("com.example.a"));
    QCOMPARE(bundle.shortVersion(), QStringLiteral("1.2.3"));
    QCOMPARE(bundle.executablePath(), path + QLatin1String("/Contents/MacOS/Main"));
    QCOMPARE(bundle.builtInPlugInsPath(), path + QLatin1String("/Contents/PlugIns"));
    QCOMPARE(bundle.pathForResource(QStringLiteral("a"), QStringLiteral("txt")),
             path + QLatin1String("/Contents/Resources/a.txt"));
    QVERIFY(bundle.pathForResource(QStringLiteral("b"), QStringLiteral("txt")).isNull());
    QVERIFY(bundle.infoString(QStringLiteral("Number")).isNull());
    for (const Bundle &none : {Bundle(), Bundle(QString()), Bundle::main()}) {
        QVERIFY(none.bundlePath().isNull() && none.resourcePath().isNull() && none.executablePath().isNull());
        QVERIFY(none.identifier().isNull());
        QVERIFY(none.pathForResource(QStringLiteral("etc"), QString()).isNull());
    }
}

void TestLinuxHost::findsAndEndsApplications()
{
    QTemporaryDir folder;
    const QString identifier = QStringLiteral("com.example.test%1").arg(::getpid());
    const QString path = makeBundle(folder.filePath(QStringLiteral("A.app")), identifier);
    const QStringList minute{QStringLiteral("60")};
    const auto application = Task::launch(path + QStringLiteral("/Contents/MacOS/Main"), minute);
    const auto helper = Task::launch(path + QStringLiteral("/Contents/MacOS/Helper"), minute);
    QVERIFY(application && helper);
    LinuxFolders folders;
    SessionBus bus;
    LinuxWorkspace workspace(folders, bus);
    const auto found = workspace.runningApplications(identifier);
    QCOMPARE(found.size(), 1);
    QCOMPARE(found.first().processId, application->processId());
    const auto later = Task::launch(path + QStringLiteral("/Contents/MacOS/Main"), minute);
    for (const RunningApplication &copy : workspace.runningApplications(identifier))
        if (copy.processId == later->processId())
            QVERIFY(copy.startTime >= found.first().startTime && found.first().startTime > 0);
    ::kill(static_cast<pid_t>(later->processId()), SIGKILL);
    QTRY_COMPARE(workspace.runningApplications(identifier).size(), 1);
    QVERIFY(workspace.runningApplications(QStringLiteral("com.example.none")).isEmpty());
    QVERIFY(workspace.runningApplications(QString()).isEmpty());
    // An update replaces the file under the running process.
    QVERIFY(QFile::remove(path + QStringLiteral("/Contents/MacOS/Main")));
    QCOMPARE(workspace.runningApplications(identifier).size(), 1);
    // Numbers that belong to somebody else by now.
    workspace.terminate({identifier, helper->processId()});
    workspace.terminate({QStringLiteral("com.example.none"), application->processId()});
    workspace.terminate({QString(), helper->processId()});
    workspace.terminate({identifier, ::getpid()});
    workspace.terminate({identifier, 0});
    workspace.terminate({identifier, -1});
    QVERIFY(application->isRunning() && helper->isRunning());
    ::kill(static_cast<pid_t>(application->processId()), SIGSTOP);
    workspace.terminate(found.first());
    QTRY_VERIFY(!application->isRunning());
    QVERIFY(workspace.runningApplications(identifier).isEmpty());
    helper->terminate();
}

void TestLinuxHost::opensOnlySafeAddresses()
{
    QTemporaryDir folder;
    const QString record = folder.filePath(QStringLiteral("record"));
    write(folder.filePath(QStringLiteral("xdg-open")),
          "#!/bin/sh\nprintf '%s\\n' \"$#\" \"$1\" >'" + QFile::encodeName(record) + ".new'\nmv '" +
              QFile::encodeName(record) + ".new' '" + QFile::encodeName(record) + "'\n",
          0755);
    const Variable path("PATH", folder.path() + u':' + qEnvironmentVariable("PATH"));
    LinuxFolders folders;
    SessionBus bus;
    LinuxWorkspace workspace(folders, bus);
    for (const char *refused : {"", "/etc/passwd", "javascript:alert(1)", "ftp://h/", "mailto:a", "data:,x",
                                "http:///x", "quillbox://x", "file://server/share", "-x"})
        QVERIFY2(!workspace.openURL(QUrl(QString::fromLatin1(refused))), refused);
    QVERIFY(workspace.openURL(QUrl(QStringLiteral("https://h/a b?q=$(id)&x='y'"))));
    QTRY_VERIFY(QFile::exists(record));
    QCOMPARE(contentOf(record), QByteArray("1\nhttps://h/a%20b?q=$(id)&x='y'\n"));
    QVERIFY(QFile::remove(record));
    QVERIFY(workspace.openURL(QUrl::fromLocalFile(folder.path())));
    QTRY_VERIFY(QFile::exists(record));
}

/// What the argument list of the desktop's program shows is for everybody; the page it names is for us alone.
void TestLinuxHost::opensSecretsInAPage()
{
    QTemporaryDir folder;
    const QString record = folder.filePath(QStringLiteral("record"));
    write(folder.filePath(QStringLiteral("xdg-open")),
          "#!/bin/sh\nprintf '%s' \"$*\" >'" + QFile::encodeName(record) + ".new'\nmv '" + QFile::encodeName(record) +
              ".new' '" + QFile::encodeName(record) + "'\n",
          0755);
    const Variable path("PATH", folder.path() + u':' + qEnvironmentVariable("PATH"));
    const Variable temporary("XDG_RUNTIME_DIR", folder.path());
    const Variable none("DBUS_SESSION_BUS_ADDRESS", QString());
    LinuxFolders folders;
    SessionBus bus;
    LinuxWorkspace workspace(folders, bus);
    for (const char *refused : {"", "javascript:alert(1)", "file:///etc/passwd", "http:///x"})
        QVERIFY2(!workspace.openSecretURL(QUrl(QString::fromLatin1(refused))), refused);
    QVERIFY(workspace.openSecretURL(QUrl(QStringLiteral("https://h/login?tokenid=s3cret&a=\"><b>"))));
    QTRY_VERIFY(QFile::exists(record));
    const QByteArray words = contentOf(record);
    QVERIFY2(words.startsWith("file:///") && !words.contains("s3cret"), words.constData());
    const QString page = QUrl(QString::fromUtf8(words)).toLocalFile();
    struct stat information = {};
    QCOMPARE(::stat(QFile::encodeName(page).constData(), &information), 0);
    QCOMPARE(information.st_mode & 07777, mode_t{0600});
    QVERIFY(contentOf(page).contains("content=\"0;url=https://h/login?tokenid=s3cret&amp;a=%22%3E%3Cb%3E\""));
    delete QCoreApplication::instance()->findChild<QTemporaryFile *>();
    QVERIFY(!QFile::exists(page));
}

void TestLinuxHost::findsFolders()
{
    const Variable home("HOME", QStringLiteral("/h"));
    const LinuxFolders folders;
    {
        const Variable configuration("XDG_CONFIG_HOME", QStringLiteral("/c"));
        const Variable data("XDG_DATA_HOME", QStringLiteral("/d"));
        const Variable cache("XDG_CACHE_HOME", QStringLiteral("/e"));
        const Variable volumes("QUILLBOX_VOLUMES", QStringLiteral("/proc/self/root//v/"));
        QCOMPARE(folders.userDefaultsFile(), QStringLiteral("/c/com.velto.quillbox.plist"));
        QCOMPARE(folders.library(), QStringLiteral("/d/com.velto.quillbox/Library"));
        QCOMPARE(folders.fonts(), QStringLiteral("/d/fonts"));
        QCOMPARE(folders.caches(), QStringLiteral("/e/com.velto.quillbox"));
        QCOMPARE(folders.volumes(), QStringLiteral("/v"));
    }
    for (const QString &unset : {QString(), QStringLiteral(""), QStringLiteral("relative")}) {
        const Variable configuration("XDG_CONFIG_HOME", unset);
        const Variable data("XDG_DATA_HOME", unset);
        const Variable cache("XDG_CACHE_HOME", unset);
        const Variable volumes("QUILLBOX_VOLUMES", unset);
        QCOMPARE(folders.userDefaultsFile(), QStringLiteral("/h/.config/com.velto.quillbox.plist"));
        QCOMPARE(folders.library(), QStringLiteral("/h/.local/share/com.velto.quillbox/Library"));
        QCOMPARE(folders.caches(), QStringLiteral("/h/.cache/com.velto.quillbox"));
        QCOMPARE(folders.volumes(), QStringLiteral("/Volumes"));
    }
    const Variable none("HOME", QString());
    QVERIFY(folders.home().startsWith(u'/'));
}

void TestLinuxHost::temporaryFolderIsPrivate()
{
    QTemporaryDir base;
    const QString runtime = base.filePath(QStringLiteral("run"));
    const Variable fallback("TMPDIR", base.path());
    const Variable variable("XDG_RUNTIME_DIR", runtime);
    const QString own = runtime + QStringLiteral("/com.velto.quillbox");
    const QString below = base.path() + QStringLiteral("/com.velto.quillbox-%1").arg(::geteuid());
    const LinuxFolders folders;
    QCOMPARE(folders.temporary(), below); // no runtime folder
    QCOMPARE(::mkdir(QFile::encodeName(runtime).constData(), 0700), 0);
    QCOMPARE(folders.temporary(), own);
    struct stat information = {};
    QCOMPARE(::chmod(QFile::encodeName(own).constData(), 0755), 0); // made too open by hand
    QCOMPARE(folders.temporary(), own);
    QCOMPARE(::stat(QFile::encodeName(own).constData(), &information), 0);
    QCOMPARE(information.st_mode & 07777u, 0700u);
    // Others may write to the runtime folder, or a link stands in the place: neither is trusted.
    QCOMPARE(::chmod(QFile::encodeName(runtime).constData(), 0777), 0);
    QCOMPARE(folders.temporary(), below);
    QCOMPARE(::rmdir(QFile::encodeName(below).constData()), 0);
    QVERIFY(QFile::link(own, below));
    QVERIFY(folders.temporary().isNull());
}

REGISTER_TEST(TestLinuxHost)
#include "TestLinuxHost.moc"
