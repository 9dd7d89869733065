#include "install/Leftovers.h"

#include "install/AttachedImages.h"
#include "install/BundleSwap.h"
#include "install/InstallLock.h"
#include "platform/Bundle.h"
#include "platform/Host.h"
#include "platform/Log.h"
#include "platform/Task.h"

#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace install
{

namespace
{

/// Something other than the cloud volume itself is mounted where images would be.
bool imagesMayBeAttached(const platform::Host &host)
{
    const QString volume = host.folders.volumes() + "/Quillbox"_L1;
    const QStringList mounted = host.volumes.mountedPaths();
    return std::any_of(mounted.begin(), mounted.end(), [&](const QString &path) {
        return path.startsWith(host.folders.volumes() + u'/') && path != volume;
    });
}

/// The manager keeps the images of updates in this one folder; those that the user attached elsewhere are left alone.
void detachDownloads(const platform::Host &host)
{
    const QString downloads = host.folders.home() + "/Downloads/"_L1;
    const AttachedImages images(host.scripts.diskImageTool(), host.folders.volumes());
    for (const AttachedImage &attached : images.list()) {
        if (attached.image.startsWith(downloads)) {
            platform::log(u"Detaching %1, left over by an update"_s.arg(attached.mountPoint));
            images.detachAt(attached.mountPoint);
        }
    }
}

} // namespace

void clearLeftovers(const platform::Host &host, const platform::Bundle &bundle, std::chrono::milliseconds patience)
{
    if (bundle.bundlePath().isNull())
        return;
    BundleSwap swap(bundle.bundlePath());
    const bool wasPending = swap.isPending();
    if (wasPending && !swap.confirm())
        platform::log(u"The update cannot be confirmed"_s);
    const InstallLock lock(host.folders.caches(), wasPending ? patience : std::chrono::milliseconds(0));
    if (!lock.isHeld())
        return;
    swap.repair();
    swap.clear();
    if (imagesMayBeAttached(host))
        detachDownloads(host);
}

void watchTrial(const platform::Host &host, const platform::Bundle &bundle, const QString &helper)
{
    if (bundle.bundlePath().isNull() || !BundleSwap(bundle.bundlePath()).isPending())
        return;
    {
        const InstallLock lock(host.folders.caches(), std::chrono::milliseconds(0));
        if (!lock.isHeld())
            return;
    }
    if (!platform::launchDetached(helper, {bundle.bundlePath()}))
        platform::log(u"Nobody watches the trial of this version"_s);
}

} // namespace install
