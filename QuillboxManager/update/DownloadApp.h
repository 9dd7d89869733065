#pragma once

#include "api/HttpTransport.h"
#include "api/QBNetworking.h"
#include "update/DownloadDelegates.h"
#include "update/DownloadFault.h"
#include "update/UpdateCommands.h"
#include "update/UpdatePlaces.h"

#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>

/// Downloads the new client as a disk image, mounts it, and starts the helper that puts it in the place of the running
/// one.
///
/// A download ends in one of four ways: the helper runs and the progress delegate hears of the completion; an error,
/// told to both delegates; silence, when the server names no address, so that the progress window stays; silence, when
/// a newer download took over or the process is about to end. Only an image that arrived whole is ever mounted; any
/// other leaves no file.
class DownloadApp
{
public:
    static DownloadApp &sharedDownloadApp();

    /// What is handed over outlives the object.
    DownloadApp(QBNetworking &networking, HttpTransport &transport, UpdatePlaces places, UpdateCommands commands = {},
                std::chrono::milliseconds stallTimeout = std::chrono::seconds(60));
    /// Aborts the download and waits for its thread.
    ~DownloadApp();
    DownloadApp(const DownloadApp &) = delete;
    DownloadApp &operator=(const DownloadApp &) = delete;

    /// Not owned, null for none. Once the call returns, the earlier delegate is called no more. Any thread.
    void setUpdateDownloadProgressDelegate(UpdateDownloadProgressDelegate *delegate);
    void setDownloadProgressWindowAndServerSettingWindowDelegate(
        DownloadProgressWindowAndServerSettingWindowDelegate *delegate);

    /// The percentage reported last.
    double numDownloadProgress() const { return progress; }

    /// Starts a download in the background and returns; an earlier one that is not being installed yet ends silently.
    /// Any thread.
    void downloadVersion();

    // These block: background pool only.

    /// Mounts the image and starts the helper with three arguments: the running application's bundle, the application
    /// in the image, the image. False when the helper cannot be started. Without exactly one mounted volume the second
    /// argument names no application, which the helper refuses.
    bool replaceQuillboxWithDownloadVersion(const QString &imagePath);
    /// Detaches, by force and one after the other, every attached image of this product.
    void ejectQuillboxRelevantMountDisk();
    /// What the command printed. It runs to its end.
    QString getCMDResponseWithLaunchPath(const QString &program, const QStringList &arguments);

    /// Texts of all groups of all matches, in order; case does not matter.
    static QStringList catchStringWithRegex(const QString &pattern, const QString &text);

private:
    void runDownload(StopSignal &stop);
    DownloadFault prepareTarget(const QString &name);
    /// Null, or why there is no image.
    QString download(const QString &url, const QString &target, StopSignal &stop);
    void bytesWritten(qint64 written, qint64 expected, const QString &target);
    void install(const QString &target);
    bool mayReplaceBundle() const;
    DownloadFault handOver(const QString &imagePath);
    bool hasRoomFor(const QString &application) const;
    void fail(const QString &text);
    QString volumePattern() const;
    QString mountedApplication(const QString &imagePath);
    bool launchInstaller(const QString &application, const QString &imagePath);
    void remove(const QString &path);

    QBNetworking &networking;
    HttpTransport &transport;
    const UpdatePlaces places;
    const UpdateCommands commands;
    const std::chrono::milliseconds stallTimeout;
    std::atomic<double> progress{0};

    std::mutex delegateMutex; ///< held while a delegate is called
    UpdateDownloadProgressDelegate *progressDelegate = nullptr;
    DownloadProgressWindowAndServerSettingWindowDelegate *errorDelegate = nullptr;

    std::mutex downloadMutex; ///< one download at a time writes and mounts
    bool handedOver = false;  ///< the helper works on the image: no other download touches it

    std::mutex mutex; ///< guards what follows
    std::condition_variable ended;
    std::shared_ptr<StopSignal> current;
    int running = 0;
};
