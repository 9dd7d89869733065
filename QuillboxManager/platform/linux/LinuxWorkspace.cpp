#include "platform/linux/LinuxWorkspace.h"

#include "platform/BoundedFile.h"
#include "platform/Bundle.h"
#include "platform/FileDescriptor.h"
#include "platform/HostProcess.h"
#include "platform/Task.h"
#include "platform/linux/DesktopPortal.h"
#include "platform/linux/RedirectPage.h"
#include "platform/linux/SessionBus.h"

#include <QFile>
#include <QHash>

#include <climits>
#include <csignal>
#include <dirent.h>
#include <limits>
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

/// Clock ticks from the boot of the machine; the largest number when the process is gone.
qint64 startTimeOf(qint64 processId)
{
    constexpr qsizetype largestLine = 4096;
    constexpr qsizetype startTimeField = 19; // behind the name, which may hold blanks and brackets
    const QString path = QFile::decodeName(processFolder(processId) + "/stat");
    const QByteArray line = readBoundedFile(path, largestLine).value_or(QByteArray());
    bool isNumber = false;
    const qint64 ticks = line.mid(line.lastIndexOf(')') + 2).split(' ').value(startTimeField).toLongLong(&isNumber);
    return isNumber ? ticks : std::numeric_limits<qint64>::max();
}

bool isWebAddress(const QUrl &url)
{
    const QString scheme = url.scheme();
    return url.isValid() && !url.host().isEmpty() &&
           (scheme == QLatin1String("http") || scheme == QLatin1String("https"));
}

bool openWithDesktop(const QUrl &url)
{
    return Task::launch(QStringLiteral("xdg-open"), {QString::fromLatin1(url.toEncoded())}) != nullptr;
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
            applications.append({bundleIdentifier, processId, startTimeOf(processId)});
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
    for (const int number : {SIGTERM, SIGCONT}) { // a stopped process learns of the first with the second
        if (process.isOpen())
            ::syscall(SYS_pidfd_send_signal, process.get(), number, nullptr, 0);
        else
            ::kill(processId, number);
    }
}

bool LinuxWorkspace::openURL(const QUrl &url)
{
    const bool isFile = url.isValid() && url.isLocalFile() && url.host().isEmpty();
    return (isFile || isWebAddress(url)) && openWithDesktop(url);
}

bool LinuxWorkspace::openSecretURL(const QUrl &url)
{
    if (!isWebAddress(url))
        return false;
    const QString page = RedirectPage::write(folders.temporary(), url);
    if (page.isNull())
        return false;
    // A browser in a sandbox sees the page only through the portal.
    DesktopPortal::openFile(bus.connection(), page, [page](bool opened) {
        if (!opened)
            openWithDesktop(QUrl::fromLocalFile(page));
    });
    return true;
}

} // namespace platform
