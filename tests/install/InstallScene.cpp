#include "InstallScene.h"

#include "install/CodeResources.h"
#include "install/ExchangePaths.h"
#include "install/RunningProcesses.h"
#include "platform/Bundle.h"
#include "platform/PropertyList.h"
#include "platform/Task.h"
#include "support/Files.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QTest>

using namespace Qt::StringLiterals;

namespace testing
{

namespace
{
const install::Patience shortPatience{.lockIsFree = std::chrono::milliseconds(300),
                                      .managerEnds = std::chrono::milliseconds(1500),
                                      .clientWorks = std::chrono::milliseconds(2000),
                                      .clientStays = std::chrono::milliseconds(300),
                                      .clientEnds = std::chrono::milliseconds(1000)};
} // namespace

void makeBundle(const QString &bundle, const QByteArray &version, const QByteArray &behaviour)
{
    const QString contents = bundle + "/Contents/"_L1;
    const QVariantMap info{{u"CFBundleIdentifier"_s, u"com.velto.quillbox"_s},
                           {u"CFBundleExecutable"_s, u"Quillbox"_s},
                           {u"CFBundleShortVersionString"_s, QString::fromLatin1(version)}};
    QVERIFY(QDir().mkpath(contents + "MacOS"_L1) &&
            platform::PropertyList::write(contents + "Info.plist"_L1, info, true) &&
            QFile::copy(QStringLiteral(INSTALL_CLIENT), contents + "MacOS/Quillbox"_L1) &&
            writeFile(contents + "behaviour"_L1, behaviour) && writeFile(contents + "Resources/a name"_L1, "content") &&
            QFile::link(u"Resources/a name"_s, contents + "link"_L1));
    writeCodeResources(bundle);
}

void writeCodeResources(const QString &bundle)
{
    const QString contents = bundle + "/Contents/"_L1;
    const QString list = install::codeResourcesFile(bundle);
    QVariantMap files;
    QDirIterator entries(contents, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        const QVariant value = entries.fileInfo().isSymLink()
                                   ? QVariant(u"Resources/a name"_s)
                                   : QCryptographicHash::hash(contentOf(path), QCryptographicHash::Sha256);
        if (path != list)
            files.insert(path.mid(contents.size()), value);
    }
    QVERIFY(QDir().mkpath(QFileInfo(list).path()) &&
            platform::PropertyList::write(list, QVariantMap{{u"files"_s, files}}, true));
}

InstallScene::InstallScene(Images given)
    : images(given), bundle(path(u"Applications/Quillbox.app"_s)), image(path(u"Downloads/a \"1\".dmg"_s))
{
    qputenv("QUILLBOX_VOLUMES", QFile::encodeName(fake.folders.volumes()));
    fake.scripts.diskImage = images == Images::Mounted ? QStringLiteral(REAL_TOOL) : QStringLiteral(DOUBLE_TOOL);
    makeBundle(bundle, "1.0.0");
    makeBundle(application(), "1.1.0");
}

InstallScene::~InstallScene()
{
    client().end();
    for (const install::AttachedImage &left : attached())
        surroundings().images.detachAt(left.mountPoint);
}

void InstallScene::setNewBehaviour(const QByteArray &behaviour) const
{
    QVERIFY(writeFile(application() + "/Contents/behaviour"_L1, behaviour));
    writeCodeResources(application());
}

void InstallScene::attachImage()
{
    QVERIFY(writeFile(image, content().toUtf8()));
    if (images == Images::Mounted)
        QCOMPARE(platform::runTask(u"mksquashfs"_s, {content(), image, u"-noappend"_s, u"-quiet"_s, u"-no-progress"_s})
                     .status,
                 0);
    attach(image);
}

void InstallScene::attach(const QString &file)
{
    const platform::TaskResult result = platform::runTask(fake.scripts.diskImage, {u"attach"_s, file});
    QVERIFY2(result.status == 0, "the disk image could not be mounted: squashfuse needs /dev/fuse and fusermount3");
    mountPoint = QFile::decodeName(result.output.trimmed().split('\t').last());
}

install::Installer::Surroundings InstallScene::surroundings()
{
    return {.images = install::AttachedImages(fake.scripts.diskImage, fake.folders.volumes()),
            .lockFolder = fake.folders.caches(),
            .patience = shortPatience,
            .exchange = install::exchangePaths,
            .reached = [this](install::Installer::Step step) {
                steps.append(QString::fromLatin1(install::Installer::nameOf(step)));
            }};
}

const platform::Host &InstallScene::host()
{
    fake.volumes.mounted.clear();
    for (const install::AttachedImage &each : attached())
        fake.volumes.mounted.append(each.mountPoint);
    return fake.host;
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
                             {wanted.bundle, wanted.newApplication, wanted.image, fake.scripts.diskImage, number})
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

void InstallScene::checkTidy()
{
    QCOMPARE(leftBeside(), QStringList());
    QVERIFY(!QFile::exists(bundle + "/Contents/update-pending"_L1));
    QVERIFY(attached().isEmpty());
}

} // namespace testing
