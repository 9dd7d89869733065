#include "platform/Task.h"
#include "platform/linux/MountTable.h"
#include "support/TestMain.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;
using namespace Qt::StringLiterals;

namespace
{

/// Some machines offer the device to root alone.
bool fileSystemsInUserSpaceWork()
{
    return ::access("/dev/fuse", R_OK | W_OK) == 0;
}

TaskResult tool(const char *name, const QStringList &arguments)
{
    return runTask(QStringLiteral(TOOLS_FOLDER "/") + QLatin1String(name), arguments);
}

TaskResult diskImages(const QStringList &arguments)
{
    return tool("hdiutil", arguments);
}

QStringList mounted()
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    return table.open(QIODevice::ReadOnly) ? mountPoints(table.readAll()) : QStringList();
}

void write(const QString &path, const QByteArray &content, mode_t mode = 0644)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
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

} // namespace

class TestHostTools : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void attachesListsAndDetaches_data();
    void attachesListsAndDetaches();
    void namesVolumesAfterTheImage_data();
    void namesVolumesAfterTheImage();
    void forcedDetachTearsNothingLivingAway();
    void refusesWhatIsNoImage_data();
    void refusesWhatIsNoImage();
    void refusesBadArguments_data();
    void refusesBadArguments();
    void registersTheExtension();
    void installsTheFont();
    void checksTheDriver();

private:
    QString makeImage(const QString &name, const QByteArray &volumeName = {});
    QString attach(const QString &image);

    std::unique_ptr<QTemporaryDir> folder;
    QString volumes;
};

void TestHostTools::init()
{
    folder = std::make_unique<QTemporaryDir>();
    volumes = folder->filePath(QStringLiteral("Vol umes'"));
    qputenv("QUILLBOX_VOLUMES", QFile::encodeName(volumes) + "/../Vol umes'//"); // meant is what the mount table names
}

void TestHostTools::cleanup()
{
    for (const QString &point : mounted())
        if (point.startsWith(folder->path()))
            runTask(QStringLiteral("fusermount3"), {QStringLiteral("-uz"), point});
    folder.reset();
}

QString TestHostTools::makeImage(const QString &name, const QByteArray &volumeName)
{
    const QString content = folder->filePath(QStringLiteral("content"));
    write(content + QStringLiteral("/Quillbox.app/file"), "inside");
    if (!volumeName.isEmpty())
        write(content + QStringLiteral("/.VolumeName"), volumeName);
    const QString image = folder->filePath(QStringLiteral("images/")) + name;
    QDir().mkpath(QFileInfo(image).path());
    const TaskResult made = runTask(QStringLiteral("mksquashfs"), {content, image, QStringLiteral("-quiet")});
    return made.status == 0 ? image : QString();
}

/// Mount point of the attached image, null when the tool failed.
QString TestHostTools::attach(const QString &image)
{
    const TaskResult result = diskImages({QStringLiteral("attach"), image});
    const QByteArray start("squashfs\t");
    if (result.status != 0 || !result.output.startsWith(start) || result.output.count('\n') != 1)
        return {};
    return QFile::decodeName(result.output.mid(start.size()).chopped(1));
}

void TestHostTools::attachesListsAndDetaches_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("second");
    const auto row = [](const char *file, const char *first, const char *second) {
        QTest::newRow(file) << QString::fromUtf8(file) << QString::fromUtf8(first) << QString::fromUtf8(second);
    };
    row("Quillbox-1.2.dmg", "Quillbox-1.2", "Quillbox-1.2 1");
    row("Quillbox.dmg", "Quillbox 1", "Quillbox 2"); // the plain name is the cloud volume's
    row("FUSE for macOS.dmg", "FUSE for macOS", "FUSE for macOS 1");
    row("$(touch x);'\"\\040*?.dmg", "$(touch x);'\"\\040*?", "$(touch x);'\"\\040*? 1");
    row("中\n文\t-.dmg", "中_文_-", "中_文_- 1");
    row("-force", "-force", "-force 1");
    row("a,user_id=1\\,b\\", "a,user_id=1\\,b\\", "a,user_id=1\\,b\\ 1");
    row(".dmg", ".dmg", ".dmg 1");
}

void TestHostTools::attachesListsAndDetaches()
{
    QFETCH(QString, file);
    QFETCH(QString, first);
    QFETCH(QString, second);
    const QString image = makeImage(file);
    QVERIFY(!image.isNull());
    if (!fileSystemsInUserSpaceWork()) {
        // Nothing stays behind where the machine does not let this user mount.
        QCOMPARE(diskImages({QStringLiteral("attach"), image}).status, 1);
        QVERIFY(QDir(volumes).isEmpty());
        return;
    }
    const QString one = volumes + u'/' + first;
    const QString two = volumes + u'/' + second;
    QCOMPARE(attach(image), one);
    QCOMPARE(attach(image), two);
    QCOMPARE(contentOf(one + QStringLiteral("/Quillbox.app/file")), QByteArray("inside"));
    QVERIFY(mounted().contains(one) && mounted().contains(two));
    const TaskResult listed = diskImages({QStringLiteral("info")});
    const QString source = image.contains(u'\n') ? QString() : u"image-path      : "_s + image + u'\n';
    QCOMPARE(QString::fromUtf8(listed.output),
             source + u"squashfs\t"_s + one + u'\n' + source + u"squashfs\t"_s + two + u'\n');
    QCOMPARE(diskImages({QStringLiteral("detach"), one}).status, 0);
    QCOMPARE(diskImages({QStringLiteral("detach"), QStringLiteral("-force"), two + u'/'}).status, 0);
    QVERIFY(diskImages({QStringLiteral("info")}).output.isEmpty());
    QVERIFY(QDir(volumes).isEmpty());
    QCOMPARE(diskImages({QStringLiteral("detach"), one}).status, 1);
}

void TestHostTools::namesVolumesAfterTheImage_data()
{
    QTest::addColumn<QByteArray>("label");
    QTest::addColumn<QString>("name");
    QTest::newRow("own name") << QByteArray("Quillbox 1.2 (beta)") << u"Quillbox 1.2 (beta)"_s;
    QTest::newRow("name of the cloud volume") << QByteArray("Quillbox") << u"Quillbox 1"_s;
    QTest::newRow("leads outside") << QByteArray("../x") << u"file"_s;
    QTest::newRow("two lines") << QByteArray("a\nsquashfs\t/") << u"file"_s;
    QTest::newRow("zero") << QByteArray("a\0b", 3) << u"file"_s;
    QTest::newRow("longest") << QByteArray(64, 'a') << QString(64, u'a');
    QTest::newRow("too long") << QByteArray(65, 'a') << u"file"_s;
}

void TestHostTools::namesVolumesAfterTheImage()
{
    QFETCH(QByteArray, label);
    const QString image = makeImage(u"file.dmg"_s, label);
    QFETCH(QString, name);
    if (!fileSystemsInUserSpaceWork()) {
        QCOMPARE(diskImages({u"attach"_s, image}).status, 1);
        return;
    }
    QCOMPARE(attach(image), volumes + u'/' + name);
}

void TestHostTools::forcedDetachTearsNothingLivingAway()
{
    const QString image = makeImage(QStringLiteral("a"));
    const QString cloud = volumes + QStringLiteral("/Quillbox");
    QVERIFY(QDir().mkpath(cloud));
    const bool works = fileSystemsInUserSpaceWork();
    const QString options = QStringLiteral("subtype=cloud"); // a volume that is no attached image
    const auto server =
        Task::launch(QStringLiteral("squashfuse"), {QStringLiteral("-f"), QStringLiteral("-o"), options, image, cloud});
    QVERIFY(server);
    QTRY_VERIFY(mounted().contains(cloud) || (!works && !server->isRunning()));
    const int busy = ::open(QFile::encodeName(cloud + QStringLiteral("/Quillbox.app/file")).constData(), O_RDONLY);
    const QStringList force{QStringLiteral("detach"), QStringLiteral("-force"), cloud};
    QCOMPARE(busy >= 0, works);
    QVERIFY(diskImages({QStringLiteral("info")}).output.isEmpty());
    QCOMPARE(diskImages(force).status, 1);
    QCOMPARE(mounted().contains(cloud), works);
    // Nobody serves it any more: now the same call heals the place, open file or not.
    ::kill(static_cast<pid_t>(server->processId()), SIGKILL);
    QTRY_VERIFY(!server->isRunning());
    QCOMPARE(diskImages(force).status, works ? 0 : 1);
    QVERIFY(!mounted().contains(cloud));
    QVERIFY(QFileInfo::exists(cloud));
    ::close(busy);
}

void TestHostTools::refusesWhatIsNoImage_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("garbage") << QByteArray("garbage");
    QTest::newRow("header alone") << QByteArray("hsqs");
    QTest::newRow("header and zeros") << "hsqs" + QByteArray(4096, '\0');
}

void TestHostTools::refusesWhatIsNoImage()
{
    QFETCH(QByteArray, content);
    const QString image = folder->filePath(QStringLiteral("bad.dmg"));
    write(image, content);
    const TaskResult result = diskImages({QStringLiteral("attach"), image});
    QCOMPARE(result.status, 1);
    QVERIFY(result.output.isEmpty());
    QVERIFY(QDir(volumes).isEmpty());
}

void TestHostTools::refusesBadArguments_data()
{
    QTest::addColumn<QString>("words");
    QTest::addColumn<int>("status");
    const auto row = [](const char *words, int status) {
        QTest::newRow(words) << QString::fromLatin1(words) << status;
    };
    row("", 64);
    row("mount", 64);
    row("attach", 64);
    row("attach,a,b", 64);
    row("info,a", 64);
    row("detach", 64);
    row("detach,-f,/x", 64);
    row("attach,/none", 1);
    row("attach,/", 1);
    row("detach,relative", 1);
    row("detach,-u", 1);
    row("detach,-force,/", 1);
    row("detach,/none", 1);
}

void TestHostTools::refusesBadArguments()
{
    QFETCH(QString, words);
    QTEST(diskImages(words.split(u',', Qt::SkipEmptyParts)).status, "status");
}

void TestHostTools::registersTheExtension()
{
    const QString contents = folder->filePath(QStringLiteral("a \"$HOME\" %f\\b.app/Contents"));
    const QString extension = contents + QStringLiteral("/PlugIns/X.appex");
    const QString data = folder->filePath(QStringLiteral("data"));
    write(contents + QStringLiteral("/MacOS/Quillbox"), "#!/bin/sh\n", 0755);
    write(contents + QStringLiteral("/MacOS/Another"), "#!/bin/sh\n", 0755);
    write(extension + QStringLiteral("/Contents/Resources/actions/a.desktop"), "Exec=@EXECUTABLE@ x @EXECUTABLE@\n");
    write(extension + QStringLiteral("/Contents/Resources/servicemenus/m.desktop"), "Name=m\n");
    write(data + QStringLiteral("/file-manager/actions/a.desktop"), "old");
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    const TaskResult result = tool("pluginkit", {QStringLiteral("-a"), extension});
    const TaskResult missing = tool("pluginkit", {QStringLiteral("-a"), extension + u'x'});
    const TaskResult usage = tool("pluginkit", {QStringLiteral("-r"), extension});
    qputenv("XDG_DATA_HOME", before);
    QCOMPARE(result.status, 0);
    QCOMPARE(missing.status, 1);
    QCOMPARE(usage.status, 64);
    // The value of a desktop entry: a backslash is doubled once more after the quoting of the command.
    const QString word = QStringLiteral("\"%1/MacOS/Quillbox\"")
                             .arg(folder->path() + QStringLiteral(R"(/a \\"\\$HOME\\" %%f\\\\b.app/Contents)"));
    QCOMPARE(QString::fromUtf8(contentOf(data + QStringLiteral("/file-manager/actions/a.desktop"))),
             QStringLiteral("Exec=%1 x %1\n").arg(word));
    const QString menu = data + QStringLiteral("/kio/servicemenus/m.desktop");
    QVERIFY(QFileInfo(menu).isExecutable());
    QCOMPARE(QDir(data + QStringLiteral("/kio/servicemenus")).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

void TestHostTools::installsTheFont()
{
    const QString resources = folder->filePath(QStringLiteral("re sources"));
    const QString data = folder->filePath(QStringLiteral("da ta"));
    const QString name = QStringLiteral("SourceHanSansSC-Normal.otf");
    const QByteArray before = qgetenv("XDG_DATA_HOME");
    qputenv("XDG_DATA_HOME", QFile::encodeName(data));
    const QStringList command{QStringLiteral(TOOLS_FOLDER "/installFonts.sh"), resources};
    QCOMPARE(runTask(QStringLiteral("/bin/bash"), command).status, 0); // no font is kept: nothing to do
    QVERIFY(!QFile::exists(data + QStringLiteral("/fonts")));
    for (const char *font : {"first", "newer"}) {
        write(resources + QStringLiteral("/SourceHanSansSC/") + name, font);
        QCOMPARE(runTask(QStringLiteral("/bin/bash"), command).status, 0);
        QCOMPARE(contentOf(data + QStringLiteral("/fonts/") + name), QByteArray(font));
    }
    qputenv("XDG_DATA_HOME", before);
    QVERIFY(QDir(data + QStringLiteral("/fonts")).entryList({QStringLiteral(".quill*")}, QDir::Hidden).isEmpty());
}

void TestHostTools::checksTheDriver()
{
    const QStringList command{QStringLiteral(TOOLS_FOLDER "/checkFuse.sh")};
    const QByteArray both("com.github.osxfuse.pkg.Core\ncom.github.osxfuse.pkg.PrefPane\n");
    const TaskResult result = runTask(QStringLiteral("/bin/sh"), command);
    QCOMPARE(result.status, 0);
    QCOMPARE(result.output, QFile::exists(QStringLiteral("/dev/fuse")) ? both : QByteArray());
    const QByteArray path = qgetenv("PATH");
    qputenv("PATH", "/nowhere"); // without the mount helper
    const TaskResult without = runTask(QStringLiteral("/bin/sh"), command);
    qputenv("PATH", path);
    QCOMPARE(without.status, 0);
    QVERIFY(without.output.isEmpty());
}

REGISTER_TEST(TestHostTools)
#include "TestHostTools.moc"
