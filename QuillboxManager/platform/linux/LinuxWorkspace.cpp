#include "platform/linux/LinuxWorkspace.h"

#include "platform/Bundle.h"
#include "platform/FileDescriptor.h"
#include "platform/HostProcess.h"
#include "platform/Task.h"

#include <QFile>
#include <QHash>

#include <climits>
#include <csignal>
#include <dirent.h>
#include <memory>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace platform
{

namespace
{

QByteArray processFolder(qint64 processId)
{
    return "/proc/" + QByteArray::number(processId);
}

QList<qint64> processesOfUser()
{
    QList<qint64> processes;
    const std::unique_ptr<DIR, int (*)(DIR *)> folder(::opendir("/proc"), ::closedir);
    while (const dirent *entry = folder ? ::readdir(folder.get()) : nullptr) {
        bool isNumber = false;
        const qint64 processId = QByteArray(entry->d_name).toLongLong(&isNumber);
        struct stat information = {};
        if (isNumber && ::stat(processFolder(processId).constData(), &information) == 0 &&
            information.st_uid == ::geteuid())
            processes.append(processId);
    }
    return processes;
}

QString executableOf(qint64 processId)
{
    char buffer[PATH_MAX];
    const ssize_t length = ::readlink((processFolder(processId) + "/exe").constData(), buffer, sizeof buffer);
    QString path = length > 0 ? QFile::decodeName(QByteArray(buffer, length)) : QString();
    const QString deleted = QStringLiteral(" (deleted)"); // an update has replaced the file under the process
    if (path.endsWith(deleted))
        path.chop(deleted.size());
    return path;
}

/// Bundle identifiers by executable, each Info.plist read once.
class IdentifierBook
{
public:
    QString of(const QString &executable)
    {
        const QString folder = bundlePathOf(executable);
        if (folder.isNull())
            return {};
        const auto known = identifiers.constFind(executable);
        if (known != identifiers.constEnd())
            return *known;
        const Bundle bundle(folder);
        // Helpers kept beside the main executable are no applications of their own.
        const QString identifier = bundle.executablePath() == executable ? bundle.identifier() : QString();
        identifiers.insert(executable, identifier);
        return identifier;
    }

private:
    QHash<QString, QString> identifiers;
};

} // namespace

QList<RunningApplication> LinuxWorkspace::runningApplications(const QString &bundleIdentifier) const
{
    QList<RunningApplication> applications;
    IdentifierBook book;
    for (const qint64 processId : processesOfUser())
        if (!bundleIdentifier.isEmpty() && book.of(executableOf(processId)) == bundleIdentifier)
            applications.append({bundleIdentifier, processId});
    return applications;
}

void LinuxWorkspace::terminate(const RunningApplication &application)
{
    const auto processId = static_cast<pid_t>(application.processId);
    if (processId <= 1 || processId != application.processId)
        return;
    // The number may belong to somebody else by now. The descriptor pins the process, then its identity is checked.
    const FileDescriptor process(static_cast<int>(::syscall(SYS_pidfd_open, processId, 0)));
    if (IdentifierBook().of(executableOf(processId)) != application.bundleIdentifier ||
        application.bundleIdentifier.isEmpty())
        return;
    if (process.isOpen())
        ::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0);
    else
        ::kill(processId, SIGTERM);
}

bool LinuxWorkspace::openURL(const QUrl &url)
{
    const QString scheme = url.scheme();
    const bool isWeb = (scheme == QLatin1String("http") || scheme == QLatin1String("https")) && !url.host().isEmpty();
    const bool isFile = url.isLocalFile() && url.host().isEmpty();
    if (!url.isValid() || (!isWeb && !isFile))
        return false;
    const QString address = QString::fromLatin1(url.toEncoded());
    return Task::launch(QStringLiteral("xdg-open"), {address}) != nullptr;
}

} // namespace platform
