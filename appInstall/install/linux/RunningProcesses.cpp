#include "install/RunningProcesses.h"

#include "platform/HostProcess.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <climits>
#include <unistd.h>

namespace install
{

QList<qint64> processesOfBundle(const QString &bundle)
{
    const QByteArray start = QFile::encodeName(QFileInfo(bundle).canonicalFilePath() + QStringLiteral("/Contents/"));
    const QByteArray own = QFile::encodeName(platform::executableFile());
    QList<qint64> processes;
    for (const QString &name : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        bool isNumber = false;
        const qint64 process = name.toLongLong(&isNumber);
        if (!isNumber)
            continue;
        // Unreadable for other users' processes.
        char path[PATH_MAX];
        const ssize_t length = ::readlink(("/proc/" + name.toLatin1() + "/exe").constData(), path, sizeof path);
        const QByteArray executable(path, std::max<ssize_t>(length, 0));
        if (executable.startsWith(start) && executable != own)
            processes.append(process);
    }
    return processes;
}

} // namespace install
