#pragma once

#include "platform/DistributedNotificationCenter.h"
#include "platform/UserNotifications.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <functional>
#include <optional>

namespace platform
{

struct RunningApplication {
    QString bundleIdentifier;
    qint64 processId = 0;
    qint64 startTime = 0; ///< in a unit of the host's own, to be compared only
};

/// The applications of this user.
class Workspace
{
public:
    virtual ~Workspace() = default;
    /// Every running application with this bundle identifier, this process included. Any thread; reads /proc on Linux,
    /// so not for a tight loop.
    virtual QList<RunningApplication> runningApplications(const QString &bundleIdentifier) const = 0;
    /// Asks it to end. Any thread.
    virtual void terminate(const RunningApplication &application) = 0;
    /// Opens an http, https or file address with the user's program for it; anything else is refused. Main thread.
    virtual bool openURL(const QUrl &url) = 0;
    /// The same for a web address that lets whoever knows it act as the user: it goes to the program without becoming
    /// visible to other users of the machine. Main thread.
    virtual bool openSecretURL(const QUrl &url) = 0;
};

/// Mounted volumes and the host's disk-image tool.
class Volumes
{
public:
    virtual ~Volumes() = default;
    /// Paths of all mounted volumes. Never touches the volumes themselves: a dead mount does not hang the caller.
    virtual QStringList mountedPaths() const = 0;
    /// Detaches the volume with the disk-image tool and waits for the tool: background pool only.
    virtual void unmount(const QString &path, bool force) = 0;
};

/// What names this machine to the server.
class DeviceIdentity
{
public:
    virtual ~DeviceIdentity() = default;
    /// Hardware address of the Ethernet interface "en0" (or what stands for it), six bytes; empty when there is none.
    virtual QByteArray hardwareAddress() const = 0;
    /// The platform's own identifier of the machine, null when unavailable.
    virtual QString systemUUID() const = 0;
};

/// The user's and the system's folders. Null where the host cannot tell one.
class Folders
{
public:
    virtual ~Folders() = default;
    virtual QString home() const = 0;
    virtual QString library() const = 0;
    virtual QString caches() const = 0;
    virtual QString fonts() const = 0;
    /// Per-user, for sockets; made owner-only on first use.
    virtual QString temporary() const = 0;
    /// Where the cloud volume is mounted: "/Volumes", or the folder that QUILLBOX_VOLUMES names.
    virtual QString volumes() const = 0;
    virtual QString userDefaultsFile() const = 0;
};

/// The driver that file systems in user space need.
class FileSystemDriver
{
public:
    virtual ~FileSystemDriver() = default;
    /// Version text of the installed driver ("CFBundleShortVersionString" of its property list), null when there is
    /// none. Background pool only.
    virtual QString installedVersion() const = 0;
};

/// The file manager's list of favourite places.
class SidebarFavorites
{
public:
    virtual ~SidebarFavorites() = default;
    /// Removes the first entry with exactly this display name, if any.
    virtual void removeFirstNamed(const QString &displayName) = 0;
};

/// What a later launch of the same application hands to the first one.
class LaunchEvents
{
public:
    virtual ~LaunchEvents() = default;
    /// The first instance listens; handlers run on the main thread until `observer` is destroyed. `reopen` comes from a
    /// plain second launch, `openURL` from a launch with an address, `serviceText` from the file manager's action.
    struct Handlers {
        std::function<void()> reopen;
        std::function<void(const QString &url)> openURL;
        std::function<void(const QString &text)> serviceText;
    };
    virtual void listen(QObject *observer, Handlers handlers) = 0;
    /// A later instance hands over what it was started with (argument list without the program name) and may end right
    /// after. False when the first instance could not be reached.
    virtual bool handOver(const QStringList &arguments) = 0;
    /// Some instance listens by now.
    virtual bool firstInstanceListens() = 0;
};

/// Runs the scripts kept among the resources; each host has its own kind behind the same names.
class Scripts
{
public:
    virtual ~Scripts() = default;
    /// Command line for script `path` of the AppleScript kind with `arguments`: program first.
    virtual QStringList appleScriptCommand(const QString &path, const QStringList &arguments) const = 0;
    /// The program that registers a Finder extension ("pluginkit").
    virtual QString extensionTool() const = 0;
    /// The program that attaches and detaches disk images ("hdiutil").
    virtual QString diskImageTool() const = 0;
};

/// Everything the platform offers, one object per process.
struct Host {
    Workspace &workspace;
    Volumes &volumes;
    DeviceIdentity &device;
    Folders &folders;
    FileSystemDriver &driver;
    SidebarFavorites &sidebar;
    LaunchEvents &launchEvents;
    Scripts &scripts;
    DistributedNotificationCenter &distributed;
    UserNotifications &userNotifications;
};

/// The host this build runs on. Made on first use; the parts that speak to the session bus connect on first use of
/// theirs.
Host &host();

} // namespace platform
