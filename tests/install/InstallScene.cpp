#include "InstallScene.h"

#include "install/CodeResources.h"
#include "install/ExchangePaths.h"
#include "install/RunningProcesses.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/PropertyList.h"
#include "platform/Task.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QFile>
#include <QTest>

#include <csignal>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace testing
{

namespace
{
const install::Patience shortPatience{.managerEnds = std::chrono::milliseconds(1500),
                                      .clientWorks = std::chrono::milliseconds(2000),
                                      .clientStays = std::chrono::milliseconds(300),
                                      .clientEnds = std::chrono::milliseconds(1000)};
} // namespace

bool imagesCanBeAttached()
{
    if (::access("/dev/fuse", R_OK | W_OK) == 0)
        return true;
    // The helper that mounts for users may have more rights than this process.
    const QTemporaryDir folder;
    const QString image = folder.filePath(u"image"_s);
    const QString point = folder.filePath(u"point"_s);
    const bool made = QDir().mkpath(point) &&
                      platform::runTask(u"mksquashfs"_s, {point, image, u"-quiet"_s, u"-no-progress"_s}).status == 0;
    const bool mounted = made && platform::runTask(u"squashfuse"_s, {image, point}).status == 0;
    if (mounted)
        platform::runTask(u"fusermount3"_s, {u"-u"_s, point});
    return mounted;
}

void writeFile(const QString &path, const QByteArray &content, int mode)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    ::chmod(QFile::encodeName(path).constData(), static_cast<mode_t>(mode));
}

void makeBundle(const QString &bundle, const QByteArray &version, const QByteArray &behaviour)
{
    const QString contents = bundle + "/Contents/"_L1;
    QVERIFY(QDir().mkpath(contents + "MacOS"_L1));
    const QVariantMap info{{u"CFBundleIdentifier"_s, u"com.velto.quillbox"_s},
                           {u"CFBundleExecutable"_s, u"Quillbox"_s},
                           {u"CFBundleShortVersionString"_s, QString::fromLatin1(version)}};
    QVERIFY(platform::PropertyList::write(contents + "Info.plist"_L1, info, true));
    QVERIFY(QFile::copy(QStringLiteral(INSTALL_CLIENT), contents + "MacOS/Quillbox"_L1));
    writeFile(contents + "behaviour"_L1, behaviour);
    writeFile(contents + "Resources/a name"_L1, "content");
    QVERIFY(QFile::link(u"Resources/a name"_s, contents + "link"_L1));
    writeCodeResources(bundle);
}

void writeCodeResources(const QString &bundle)
{
    const QString contents = bundle + "/Contents/"_L1;
    const QString list = install::codeResourcesFile(bundle);
    QVariantMap files;
    QDirIterator entries(contents, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        QFile file(entries.next());
        const QString name = file.fileName().mid(contents.size());
        if (entries.fileInfo().isSymLink())
            files.insert(name, u"Resources/a name"_s);
        else if (file.fileName() != list && file.open(QIODevice::ReadOnly))
            files.insert(name, QCryptographicHash::hash(file.readAll(), QCryptographicHash::Sha256));
    }
    QVERIFY(QDir().mkpath(QFileInfo(list).path()));
    QVERIFY(platform::PropertyList::write(list, QVariantMap{{u"files"_s, files}}, true));
}

InstallScene::InstallScene() : bundle(path(u"Applications/Quillbox.app"_s)), image(path(u"Downloads/a \"1\".dmg"_s))
{
    qputenv("HOME", QFile::encodeName(folder.path()));
    qputenv("XDG_CACHE_HOME", QFile::encodeName(path(u"cache"_s)));
    qputenv("QUILLBOX_VOLUMES", QFile::encodeName(path(u"Volumes"_s)));
    if (!qgetenv("PATH").startsWith(TOOLS_FOLDER ":"))
        qputenv("PATH", TOOLS_FOLDER ":" + qgetenv("PATH"));
    makeBundle(bundle, "1.0.0");
    makeBundle(content() + "/Quillbox.app"_L1, "1.1.0");
    writeFile(content() + "/.VolumeName"_L1, "Quillbox 1.1.0");
}

InstallScene::~InstallScene()
{
    client().end();
    for (const install::AttachedImage &left : surroundings().images.list())
        surroundings().images.detachAt(left.mountPoint);
}

void InstallScene::attachImage()
{
    QVERIFY(QDir().mkpath(QFileInfo(image).path()));
    const QStringList options{content(), image, u"-quiet"_s, u"-no-progress"_s};
    QCOMPARE(platform::runTask(u"mksquashfs"_s, options).status, 0);
    const platform::TaskResult result = platform::runTask(u"hdiutil"_s, {u"attach"_s, image});
    QCOMPARE(result.status, 0);
    mountPoint = QFile::decodeName(result.output.trimmed().split('\t').last());
}

install::UpdateRequest InstallScene::request() const
{
    return {bundle, mountPoint + "/Quillbox.app"_L1, image};
}

install::Installer::Surroundings InstallScene::surroundings()
{
    return {.images = install::AttachedImages(u"hdiutil"_s, path(u"Volumes"_s)),
            .lockFolder = platform::host().folders.caches(),
            .patience = shortPatience,
            .exchange = install::exchangePaths,
            .reached = [this](install::Installer::Step step) {
                steps.append(QString::fromLatin1(install::Installer::nameOf(step)));
            }};
}

install::ClientRuns InstallScene::client() const
{
    return install::ClientRuns(bundle, shortPatience);
}

bool InstallScene::killedAfter(install::Installer::Step step)
{
    const install::UpdateRequest wanted = request();
    const QString number = QString::number(static_cast<int>(step));
    return platform::runTask(QStringLiteral(INSTALL_STEPPER),
                             {wanted.bundle, wanted.newApplication, wanted.image, number})
               .status == -1;
}

QString InstallScene::installedVersion() const
{
    return platform::Bundle(bundle).shortVersion();
}

QString InstallScene::runningVersion() const
{
    return install::processesOfBundle(bundle).isEmpty() ? QString() : installedVersion();
}

QStringList InstallScene::leftBeside() const
{
    QStringList names =
        QDir(QFileInfo(bundle).path()).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
    names.removeAll(QFileInfo(bundle).fileName());
    return names;
}

qsizetype InstallScene::attached() const
{
    return install::AttachedImages(u"hdiutil"_s, path(u"Volumes"_s)).list().size();
}

} // namespace testing
