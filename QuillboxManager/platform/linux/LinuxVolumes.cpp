#include "platform/linux/LinuxVolumes.h"

#include "platform/BoundedFile.h"
#include "platform/Task.h"
#include "platform/linux/MountTable.h"

namespace platform
{

QStringList LinuxVolumes::mountedPaths() const
{
    constexpr qsizetype largestTable = 16 * 1024 * 1024;
    return mountPoints(readBoundedFile(QStringLiteral("/proc/self/mountinfo"), largestTable).value_or(QByteArray()));
}

void LinuxVolumes::unmount(const QString &path, bool force)
{
    QStringList arguments{QStringLiteral("detach")};
    if (force)
        arguments.append(QStringLiteral("-force"));
    arguments.append(path);
    runTask(scripts.diskImageTool(), arguments);
}

} // namespace platform
