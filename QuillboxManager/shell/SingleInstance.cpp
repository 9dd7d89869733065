#include "shell/SingleInstance.h"

#include "platform/Bundle.h"
#include "platform/Host.h"

#include <QCoreApplication>

#include <utility>

namespace shell::SingleInstance
{

namespace
{
using Age = std::pair<qint64, qint64>;

Age ageOf(const platform::RunningApplication &application)
{
    return {application.startTime, application.processId};
}
} // namespace

OtherCopies otherCopies(const platform::Workspace &workspace, const QString &bundleIdentifier, qint64 ownProcessId)
{
    if (bundleIdentifier.isEmpty())
        return OtherCopies::None;
    QList<platform::RunningApplication> others = workspace.runningApplications(bundleIdentifier);
    std::optional<Age> own;
    others.removeIf([&](const platform::RunningApplication &application) {
        if (application.processId != ownProcessId)
            return false;
        own = ageOf(application);
        return true;
    });
    if (others.isEmpty())
        return OtherCopies::None;
    for (const platform::RunningApplication &other : std::as_const(others))
        if (!own || ageOf(other) < *own)
            return OtherCopies::Older;
    return OtherCopies::Younger;
}

bool yieldToOtherCopy(platform::Host &host, const platform::Bundle &bundle, int argc, char **argv)
{
    const OtherCopies others = otherCopies(host.workspace, bundle.identifier(), QCoreApplication::applicationPid());
    if (others == OtherCopies::None)
        return false;
    // The session bus wants an application object; it stands for the few milliseconds of the hand-over.
    const QCoreApplication application(argc, argv);
    // A wrapper that waited before it turned into this program is older than a copy that has long been at work.
    if (others == OtherCopies::Younger && !host.launchEvents.firstInstanceListens())
        return false;
    host.launchEvents.handOver(QCoreApplication::arguments().mid(1));
    return true;
}

} // namespace shell::SingleInstance
