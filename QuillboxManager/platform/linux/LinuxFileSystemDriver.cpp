#include "platform/linux/LinuxFileSystemDriver.h"

#include "platform/Task.h"

#include <QRegularExpression>

#include <unistd.h>

namespace platform
{

QString LinuxFileSystemDriver::installedVersion() const
{
    if (::access("/dev/fuse", F_OK) != 0)
        return {};
    const TaskResult answer = runTask(QStringLiteral("fusermount3"), {QStringLiteral("--version")});
    if (answer.status != 0)
        return {};
    static const QRegularExpression version(QStringLiteral("[0-9]+(\\.[0-9]+)+"));
    const QRegularExpressionMatch match = version.match(QString::fromUtf8(answer.output));
    return match.hasMatch() ? match.captured() : QString();
}

} // namespace platform
