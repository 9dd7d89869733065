#include "platform/Task.h"
#include "platform/linux/MountTable.h"
#include "support/Files.h"
#include "support/Rows.h"
#include "support/TestMain.h"
#include "support/Variable.h"

#include <QTemporaryDir>

#include <csignal>
#include <fcntl.h>
#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;
using testing::contentOf;
using testing::writeFile;

namespace
{

TaskResult tool(const char *name, const QStringList &arguments)
{
    return runTask(QStringLiteral(TOOLS_FOLDER "/") + QLatin1String(name), arguments);
}

TaskResult diskImages(const QStringList &arguments)
{
    return tool("hdiutil", arguments);
}

} // namespace

/// The programs and scripts that stand for the system's own, where they may mount and where they may not.
class TestHostTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        folder = std::make_unique<QTemporaryDir>();
        volumes = folder->filePath(u"Vol umes'"_s);
        qputenv("QUILLBOX_VOLUMES", QFile::encodeName(volumes) + "/../Vol umes'//"); // meant is what the table names
    }

    void cleanup()
    {
        for (const QString &point : mounted())
            if (point.startsWith(folder->path()))
                runTask(u"fusermount3"_s, {u"-uz"_s, point});
        folder.reset();
    }

    void attachesListsAndDetaches_data()
    {
        const testing::Rows<QString, QString, QString> row("file", "first", "second");
        row("Quillbox-1.2.dmg", "Quillbox-1.2", "Quillbox-1.2 1");
        row("Quillbox.dmg", "Quillbox 1", "Quillbox 2"); // the plain name is the cloud volume's
        row("$(touch x);'\"\\040*?.dmg", "$(touch x);'\"\\040*?", "$(touch x);'\"\\040*? 1");
        row("中\n文\t-.dmg", "中_文_-", "中_文_- 1");
        row("-force", "-force", "-force 1");
        row("a,user_id=1\\,b\\", "a,user_id=1\\,b\\", "a,user_id=1\\,b\\ 1");
        row(".dmg", ".dmg", ".dmg 1");
    }
    void attachesListsAndDetaches()
    {
        QFETCH(QString, file);
        QFETCH(QString, first);
        QFETCH(QString, second);
        const QString image = makeImage(file);
        QVERIFY(!image.isNull());
        if (!mayMount) {
            QCOMPARE(diskImages({u"attach"_s, image}).status, 1);
            QVERIFY2(QDir(volumes).isEmpty(), "nothing stays behind");
            return;
        }
        const QString one = volumes + u'/' + first;
        const QString two = volumes + u'/' + second;
        QCOMPARE(attach(image), one);
        QCOMPARE(attach(image), two);
        QCOMPARE(contentOf(one + "/Quillbox.app/file"_L1), "inside"_ba);
        QVERIFY(mounted().contains(one) && mounted().contains(two));
        const QString source = image.contains(u'\n') ? QString() : u"image-path      : "_s + image + u'\n';
        QCOMPARE(QString::fromUtf8(diskImages({u"info"_s}).output),
                 source + u"squashfs\t"_s + one + u'\n' + source + u"squashfs\t"_s + two + u'\n');
        QCOMPARE(diskImages({u"detach"_s, one}).status, 0);
        QCOMPARE(diskImages({u"detach"_s, u"-force"_s, two + u'/'}).status, 0);
        QVERIFY(diskImages({u"info"_s}).output.isEmpty());
        QVERIFY(QDir(volumes).isEmpty());
        QCOMPARE(diskImages({u"detach"_s, one}).status, 1);
    }

    void namesVolumesAfterTheImage_data()
    {
        const testing::Rows<QByteArray, QString> row("label", "name");
        row("own name", "Quillbox 1.2 (beta)", "Quillbox 1.2 (beta)");
        row("name of the cloud volume", "Quillbox", "Quillbox 1");
        row("leads outside", "../x", "file");
        row("two lines", "a\nsquashfs\t/", "file");
        row("zero", QByteArray("a\0b", 3), "file");
        row("longest", QByteArray(64, 'a'), QString(64, u'a'));
        row("too long", QByteArray(65, 'a'), "file");
    }
    void namesVolumesAfterTheImage()
    {
        QFETCH(QByteArray, label);
        QFETCH(QString, name);
        QCOMPARE(attach(makeImage(u"file.dmg"_s, label)), mayMount ? volumes + u'/' + name : QString());
    }

    void forcedDetachTearsNothingLivingAway()
    {
        const QString image = makeImage(u"a"_s);
        const QString cloud = volumes + "/Quillbox"_L1;
        QVERIFY(QDir().mkpath(cloud));
        const QString options = u"subtype=cloud"_s; // a volume that is no attached image
        const auto server = Task::launch(u"squashfuse"_s, {u"-f"_s, u"-o"_s, options, image, cloud});
        QVERIFY(server);
        QTRY_VERIFY(mounted().contains(cloud) || (!mayMount && !server->isRunning()));
        const int busy = ::open(QFile::encodeName(cloud + "/Quillbox.app/file"_L1).constData(), O_RDONLY);
        const QStringList force{u"detach"_s, u"-force"_s, cloud};
        QCOMPARE(busy >= 0, mayMount);
        QVERIFY(diskImages({u"info"_s}).output.isEmpty());
        QCOMPARE(diskImages(force).status, 1);
        QCOMPARE(mounted().contains(cloud), mayMount);
        // Nobody serves it any more: now the same call heals the place, open file or not.
        ::kill(static_cast<pid_t>(server->processId()), SIGKILL);
        QTRY_VERIFY(!server->isRunning());
        QCOMPARE(diskImages(force).status, mayMount ? 0 : 1);
        QVERIFY(!mounted().contains(cloud));
        QVERIFY(QFileInfo::exists(cloud));
        ::close(busy);
    }

    void refusesWhatIsNoImage()
    {
        const QString image = folder->filePath(u"bad.dmg"_s);
        for (const QByteArray &content : {""_ba, "garbage"_ba, "hsqs"_ba, "hsqs" + QByteArray(4096, '\0')}) {
            QVERIFY(writeFile(image, content));
            const TaskResult result = diskImages({u"attach"_s, image});
            QCOMPARE(result.status, 1);
            QVERIFY(result.output.isEmpty() && QDir(volumes).isEmpty());
        }
    }

    void refusesBadArguments()
    {
        const auto status = [](const char *words) {
            return diskImages(QString::fromLatin1(words).split(u',', Qt::SkipEmptyParts)).status;
        };
        for (const char *misused : {"", "mount", "attach", "attach,a,b", "info,a", "detach", "detach,-f,/x"})
            QVERIFY2(status(misused) == 64, misused);
        for (const char *failing :
             {"attach,/none", "attach,/", "detach,relative", "detach,-u", "detach,-force,/", "detach,/none"})
            QVERIFY2(status(failing) == 1, failing);
    }

    void registersTheExtension()
    {
        const QString contents = folder->filePath(u"a \"$HOME\" %f\\b.app/Contents"_s);
        const QString extension = contents + "/PlugIns/X.appex"_L1;
        const QString resources = extension + "/Contents/Resources"_L1;
        const QString data = folder->filePath(u"data"_s);
        const QString action = data + "/file-manager/actions/a.desktop"_L1;
        const QString menus = data + "/kio/servicemenus"_L1;
        for (const char *program : {"/MacOS/Quillbox", "/MacOS/Another"})
            QVERIFY(writeFile(contents + QLatin1String(program), "#!/bin/sh\n", 0755));
        QVERIFY(writeFile(resources + "/actions/a.desktop"_L1, "Exec=@EXECUTABLE@ x @EXECUTABLE@\n"));
        QVERIFY(writeFile(resources + "/servicemenus/m.desktop"_L1, "Name=m\n"));
        QVERIFY(writeFile(action, "old"));
        const testing::Variable base("XDG_DATA_HOME", data);
        QCOMPARE(runTask(QStringLiteral(PLUGINKIT), {u"-a"_s, extension}).status, 0);
        QCOMPARE(runTask(QStringLiteral(PLUGINKIT), {u"-a"_s, extension + u'x'}).status, 1);
        QCOMPARE(runTask(QStringLiteral(PLUGINKIT), {u"-r"_s, extension}).status, 64);
        // The value of a desktop entry: a backslash is doubled once more after the quoting of the command.
        const QString quoted = folder->path() + "/a \\\\\"\\\\$HOME\\\\\" %%f\\\\\\\\b.app/Contents"_L1;
        QCOMPARE(QString::fromUtf8(contentOf(action)),
                 u"Exec=\"%1/MacOS/Quillbox\" x \"%1/MacOS/Quillbox\"\n"_s.arg(quoted));
        QVERIFY(QFileInfo(menus + "/m.desktop"_L1).isExecutable());
        QCOMPARE(QDir(menus).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }

    void installsTheFont()
    {
        const QString resources = folder->filePath(u"re sources"_s);
        const QString fonts = folder->filePath(u"da ta/fonts"_s);
        const testing::Variable base("XDG_DATA_HOME", folder->filePath(u"da ta"_s));
        const QStringList command{QStringLiteral(TOOLS_FOLDER "/installFonts.sh"), resources};
        QCOMPARE(runTask(u"/bin/bash"_s, command).status, 0);
        QVERIFY2(!QFile::exists(fonts), "no font is kept: nothing to do");
        for (const QByteArray font : {"first", "newer"}) {
            QVERIFY(writeFile(resources + "/SourceHanSansSC/SourceHanSansSC-Normal.otf"_L1, font));
            QCOMPARE(runTask(u"/bin/bash"_s, command).status, 0);
            QCOMPARE(contentOf(fonts + "/SourceHanSansSC-Normal.otf"_L1), font);
        }
        QVERIFY(QDir(fonts).entryList({u".quill*"_s}, QDir::Hidden).isEmpty());
    }

    void checksTheDriver()
    {
        const QStringList command{QStringLiteral(TOOLS_FOLDER "/checkFuse.sh")};
        const QByteArray both("com.github.osxfuse.pkg.Core\ncom.github.osxfuse.pkg.PrefPane\n");
        const TaskResult result = runTask(u"/bin/sh"_s, command);
        QCOMPARE(result.status, 0);
        QCOMPARE(result.output, QFile::exists(u"/dev/fuse"_s) ? both : QByteArray());
        const testing::Variable path("PATH", u"/nowhere"_s); // without the mount helper
        const TaskResult without = runTask(u"/bin/sh"_s, command);
        QCOMPARE(without.status, 0);
        QVERIFY(without.output.isEmpty());
    }

private:
    static QStringList mounted() { return mountPoints(contentOf(u"/proc/self/mountinfo"_s)); }

    QString makeImage(const QString &name, const QByteArray &volumeName = {})
    {
        const QString content = folder->filePath(u"content"_s);
        const QString image = folder->filePath(u"images/"_s) + name;
        const bool ready = writeFile(content + "/Quillbox.app/file"_L1, "inside") &&
                           QDir().mkpath(QFileInfo(image).path()) &&
                           (volumeName.isEmpty() || writeFile(content + "/.VolumeName"_L1, volumeName));
        return ready && runTask(u"mksquashfs"_s, {content, image, u"-quiet"_s}).status == 0 ? image : QString();
    }

    /// Mount point of the attached image, null when the tool failed.
    QString attach(const QString &image)
    {
        const TaskResult result = diskImages({u"attach"_s, image});
        const QByteArray start("squashfs\t");
        if (result.status != 0 || !result.output.startsWith(start) || result.output.count('\n') != 1)
            return {};
        return QFile::decodeName(result.output.mid(start.size()).chopped(1));
    }

    const bool mayMount = ::access("/dev/fuse", R_OK | W_OK) == 0; ///< some machines offer the device to root alone
    std::unique_ptr<QTemporaryDir> folder;
    QString volumes;
};

REGISTER_TEST(TestHostTools)
#include "TestHostTools.moc"
