#include "shell/SingleInstance.h"

#include "platform/Bundle.h"
#include "platform/Host.h"

#include <QCoreApplication>

namespace shell::SingleInstance
{

bool otherCopyRuns(const platform::Workspace &workspace, const QString &bundleIdentifier, qint64 ownProcessId)
{
    if (bundleIdentifier.isEmpty())
        return false;
    for (const platform::RunningApplication &application : workspace.runningApplications(bundleIdentifier))
        if (application.processId != ownProcessId)
            return true;
    return false;
}

bool yieldToOtherCopy(platform::Host &host, const platform::Bundle &bundle, int argc, char **argv)
{
    if (!otherCopyRuns(host.workspace, bundle.identifier(), QCoreApplication::applicationPid()))
        return false;
    // The session bus wants an application object; it stands for the few milliseconds of the hand-over.
    const QCoreApplication application(argc, argv);
    host.launchEvents.handOver(QCoreApplication::arguments().mid(1));
    return true;
}

} // namespace shell::SingleInstance
