// The second half: from the downloaded image to the running helper.
#include "files/FileManagerCreate.h"
#include "files/PathUtils.h"
#include "install/UpdateRequest.h"
#include "platform/Log.h"
#include "update/DownloadApp.h"

#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStorageInfo>

#include <algorithm>
#include <filesystem>

namespace
{
QString applicationPattern()
{
    return QStringLiteral("(.*?.app)\\n");
}

void copyFolder(const QString &from, const QString &to)
{
    namespace fs = std::filesystem;
    std::error_code failure;
    fs::copy(fs::path(QFile::encodeName(from).toStdString()), fs::path(QFile::encodeName(to).toStdString()),
             fs::copy_options::recursive | fs::copy_options::copy_symlinks, failure);
    if (failure)
        platform::log(QStringLiteral("The installer was not copied whole: %1")
                          .arg(QString::fromLocal8Bit(failure.message().c_str())));
}
} // namespace

bool DownloadApp::replaceQuillboxWithDownloadVersion(const QString &imagePath)
{
    return handOver(imagePath) == DownloadFault::None;
}

DownloadFault DownloadApp::handOver(const QString &imagePath)
{
    ejectQuillboxRelevantMountDisk();
    const QString application = mountedApplication(imagePath);
    if (!PathUtils::exist(places.bundle.bundlePath()))
        return DownloadFault::None;
    if (!hasRoomFor(application))
        return DownloadFault::NoSpace;
    return launchInstaller(application, imagePath) ? DownloadFault::None : DownloadFault::NoInstaller;
}

bool DownloadApp::mayReplaceBundle() const
{
    const QString bundle = places.bundle.bundlePath();
    const QString problem = PathUtils::exist(bundle) ? install::problemWithBundle(bundle) : QString();
    if (!problem.isNull())
        platform::log(QStringLiteral("%1 cannot be replaced: %2").arg(bundle, problem));
    return problem.isNull();
}

/// The helper builds the new bundle up beside the old one.
bool DownloadApp::hasRoomFor(const QString &application) const
{
    const qint64 available = QStorageInfo(QFileInfo(places.bundle.bundlePath()).path()).bytesAvailable();
    if (available < 0 || !application.endsWith(QLatin1String(".app"))) // a path without an application leads anywhere
        return true;
    qint64 needed = 0;
    QDirIterator files(application, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext() && needed <= available)
        needed += std::min(QFileInfo(files.next()).size(), available + 1);
    return needed <= available;
}

QString DownloadApp::mountedApplication(const QString &imagePath)
{
    const QString attached = getCMDResponseWithLaunchPath(places.diskImageTool, {QStringLiteral("attach"), imagePath});
    const QStringList volumes = catchStringWithRegex(volumePattern(), attached);
    const QString volume = volumes.size() == 1 ? volumes.first() : QStringLiteral("");
    const QString listing = getCMDResponseWithLaunchPath(QStringLiteral("/bin/ls"), {volume});
    return volume + u'/' + catchStringWithRegex(applicationPattern(), listing).value(0);
}

bool DownloadApp::launchInstaller(const QString &application, const QString &imagePath)
{
    const QString installer = places.bundle.pathForResource(QStringLiteral("appInstall"), QStringLiteral("app"));
    if (installer.isNull()) {
        platform::log(QStringLiteral("The bundle holds no installer."));
        return false;
    }
    FileManagerCreate::createDirectoryIfNotExist(QFileInfo(places.installerCopy).path());
    if (QFileInfo(places.installerCopy).isSymLink() || PathUtils::exist(places.installerCopy))
        remove(places.installerCopy);
    copyFolder(installer, places.installerCopy);
    return commands.launch(places.installerProgram(), {places.bundle.bundlePath(), application, imagePath});
}

void DownloadApp::ejectQuillboxRelevantMountDisk()
{
    const QString attached = getCMDResponseWithLaunchPath(places.diskImageTool, {QStringLiteral("info")});
    const QStringList volumes = catchStringWithRegex(volumePattern(), attached);
    for (const QString &volume : volumes)
        commands.run(places.diskImageTool, {QStringLiteral("detach"), QStringLiteral("-force"), volume});
}

QString DownloadApp::volumePattern() const
{
    return QStringLiteral("^*(%1/Quillbox.*?)\\n").arg(QRegularExpression::escape(places.volumes));
}

QString DownloadApp::getCMDResponseWithLaunchPath(const QString &program, const QStringList &arguments)
{
    return QString::fromUtf8(commands.run(program, arguments).output);
}

QStringList DownloadApp::catchStringWithRegex(const QString &pattern, const QString &text)
{
    // An anchor that may be repeated asks for nothing; this engine wants it said in a group.
    const QString repeatedAnchor = QStringLiteral("^*");
    const QString accepted =
        pattern.startsWith(repeatedAnchor) ? QStringLiteral("(?:^)*") + pattern.mid(repeatedAnchor.size()) : pattern;
    const QRegularExpression expression(accepted, QRegularExpression::CaseInsensitiveOption);
    QStringList found;
    if (!expression.isValid())
        return found;
    for (auto matches = expression.globalMatch(text); matches.hasNext();) {
        const QRegularExpressionMatch match = matches.next();
        for (int group = 1; group <= expression.captureCount(); ++group)
            found.append(match.captured(group));
    }
    return found;
}
