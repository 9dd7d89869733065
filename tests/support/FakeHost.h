#pragma once

#include "platform/Host.h"

#include <QObject>
#include <QPointer>

#include <utility>

/// Doubles of the host's parts. Answers are plain members to be set by the test; calls are recorded in order. One
/// thread at a time, except where the product calls from the background pool: the test then waits before it looks.
namespace testing
{

struct FakeWorkspace : platform::Workspace {
    QList<platform::RunningApplication> running;
    mutable QStringList asked; ///< bundle identifiers
    QList<platform::RunningApplication> terminated;
    QList<QUrl> opened;
    QList<QUrl> openedInSecret;
    bool opens = true;

    QList<platform::RunningApplication> runningApplications(const QString &bundleIdentifier) const override
    {
        asked.append(bundleIdentifier);
        QList<platform::RunningApplication> found;
        for (const platform::RunningApplication &application : running)
            if (application.bundleIdentifier == bundleIdentifier)
                found.append(application);
        return found;
    }
    void terminate(const platform::RunningApplication &application) override { terminated.append(application); }
    bool openURL(const QUrl &url) override
    {
        opened.append(url);
        return opens;
    }
    bool openSecretURL(const QUrl &url) override
    {
        openedInSecret.append(url);
        return opens;
    }
};

struct FakeVolumes : platform::Volumes {
    QStringList mounted;
    QList<std::pair<QString, bool>> unmounted; ///< path and force
    QStringList busy;                          ///< paths that stay mounted whatever is asked

    QStringList mountedPaths() const override { return mounted; }
    void unmount(const QString &path, bool force) override
    {
        unmounted.append({path, force});
        if (!busy.contains(path))
            mounted.removeAll(path);
    }
};

struct FakeDeviceIdentity : platform::DeviceIdentity {
    QByteArray address = QByteArray::fromHex("001122aabbcc");
    QString identifier = QStringLiteral("0123456789abcdef0123456789abcdef");

    QByteArray hardwareAddress() const override { return address; }
    QString systemUUID() const override { return identifier; }
};

/// Everything below one folder, which the test owns.
struct FakeFolders : platform::Folders {
    explicit FakeFolders(const QString &rootFolder = {}) : root(rootFolder) {}
    QString root;

    QString home() const override { return root; }
    QString library() const override { return below("Library"); }
    QString caches() const override { return below("Caches"); }
    QString fonts() const override { return below("Fonts"); }
    QString temporary() const override { return root; }
    QString volumes() const override { return below("Volumes"); }
    QString userDefaultsFile() const override { return below("defaults.plist"); }

private:
    QString below(const char *name) const { return root + u'/' + QLatin1String(name); }
};

struct FakeFileSystemDriver : platform::FileSystemDriver {
    QString version = QStringLiteral("3.14.0");

    QString installedVersion() const override { return version; }
};

struct FakeSidebarFavorites : platform::SidebarFavorites {
    QStringList removed;

    void removeFirstNamed(const QString &displayName) override { removed.append(displayName); }
};

struct FakeLaunchEvents : platform::LaunchEvents {
    QPointer<QObject> observer;
    Handlers handlers; ///< to be called by the test, as a later launch would
    QList<QStringList> handedOver;
    bool reachesFirst = true;
    bool listens = false;

    void listen(QObject *object, Handlers given) override
    {
        observer = object;
        handlers = std::move(given);
    }
    bool handOver(const QStringList &arguments) override
    {
        handedOver.append(arguments);
        return reachesFirst;
    }
    bool firstInstanceListens() override { return listens; }
};

struct FakeScripts : platform::Scripts {
    QString extension = QStringLiteral("/bin/true");
    QString diskImage = QStringLiteral("/bin/true");

    QStringList appleScriptCommand(const QString &path, const QStringList &arguments) const override
    {
        return QStringList{QStringLiteral("/bin/sh"), path} + arguments;
    }
    QString extensionTool() const override { return extension; }
    QString diskImageTool() const override { return diskImage; }
};

struct FakeDistributedNotifications : platform::DistributedNotificationCenter {
    platform::NotificationCenter center;
    QStringList observed;
    QList<std::pair<QString, QVariantMap>> posted; ///< by the product; not delivered back

    void addObserver(QObject *observer, const QString &name, platform::NotificationHandler handler) override
    {
        observed.append(name);
        center.addObserver(observer, name, std::move(handler));
    }
    void post(const QString &name, const QVariantMap &userInfo = {}) override { posted.append({name, userInfo}); }
    /// As if another process had posted it.
    void arrive(const QString &name, const QVariantMap &userInfo = {}) { center.post(name, {}, userInfo); }
};

struct FakeUserNotifications : platform::UserNotifications {
    QStringList scheduled; ///< "title: text"

    void schedule(const QString &title, const QString &informativeText) override
    {
        scheduled.append(title + QStringLiteral(": ") + informativeText);
    }
};

/// All doubles and the bundle of references that the product takes.
struct FakeHost {
    explicit FakeHost(const QString &rootFolder = {}) : folders(rootFolder) {}
    FakeHost(const FakeHost &) = delete;
    FakeHost &operator=(const FakeHost &) = delete;

    FakeWorkspace workspace;
    FakeVolumes volumes;
    FakeDeviceIdentity device;
    FakeFolders folders;
    FakeFileSystemDriver driver;
    FakeSidebarFavorites sidebar;
    FakeLaunchEvents launchEvents;
    FakeScripts scripts;
    FakeDistributedNotifications distributed;
    FakeUserNotifications userNotifications;
    platform::Host host{workspace, volumes,      device,  folders,     driver,
                        sidebar,   launchEvents, scripts, distributed, userNotifications};
};

} // namespace testing
