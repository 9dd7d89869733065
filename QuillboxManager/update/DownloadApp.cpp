#include "update/DownloadApp.h"

#include "files/FileManagerCreate.h"
#include "platform/Dispatch.h"
#include "platform/Log.h"
#include "update/DownloadTarget.h"
#include "update/ImageSink.h"
#include "update/UpdateAnswer.h"

#include <utility>

namespace
{
/// Of what servers say instead of an image; nobody reads it.
constexpr qint64 LongestRefusal = 64 * 1024;

bool isCancelled(const QBError &error)
{
    return error && error.domain() == QBError::transportDomain() &&
           error.code() == static_cast<qint64>(TransportError::Cancelled);
}

QString reasonOf(const ImageSink &sink, const HttpReply &reply)
{
    constexpr int statusOk = 200;
    if (sink.fault() != DownloadFault::None)
        return downloadFaultText(sink.fault(), sink.faultDetail());
    if (reply.error)
        return reply.error.localizedDescription();
    if (reply.status != statusOk)
        return downloadFaultText(DownloadFault::HttpStatus, QString::number(reply.status));
    return downloadFaultText(DownloadFault::Incomplete);
}
} // namespace

DownloadApp &DownloadApp::sharedDownloadApp()
{
    // Never destroyed: a download may outlive the static objects of a process that quits.
    static auto *const shared =
        new DownloadApp(QBNetworking::sharedNetworking(), HttpTransport::shared(), UpdatePlaces::ofHost());
    return *shared;
}

DownloadApp::DownloadApp(QBNetworking &client, HttpTransport &http, UpdatePlaces where, UpdateCommands programs,
                         std::chrono::milliseconds patience)
    : networking(client), transport(http), places(std::move(where)), commands(std::move(programs)),
      stallTimeout(patience)
{
}

DownloadApp::~DownloadApp()
{
    std::unique_lock lock(mutex);
    if (current)
        current->stop();
    ended.wait(lock, [this] { return running == 0; });
}

void DownloadApp::setUpdateDownloadProgressDelegate(UpdateDownloadProgressDelegate *delegate)
{
    const std::lock_guard lock(delegateMutex);
    progressDelegate = delegate;
}

void DownloadApp::setDownloadProgressWindowAndServerSettingWindowDelegate(
    DownloadProgressWindowAndServerSettingWindowDelegate *delegate)
{
    const std::lock_guard lock(delegateMutex);
    errorDelegate = delegate;
}

void DownloadApp::downloadVersion()
{
    const auto stop = std::make_shared<StopSignal>();
    {
        const std::lock_guard lock(mutex);
        if (current)
            current->stop();
        current = stop;
        ++running;
    }
    platform::dispatchGlobal([this, stop] {
        runDownload(*stop);
        const std::lock_guard lock(mutex);
        --running;
        ended.notify_all();
    });
}

void DownloadApp::runDownload(StopSignal &stop)
{
    QBError error;
    const ServerReply answer = networking.requestDownloadUrl(&error);
    const QString url = answer ? answer->value(QStringLiteral("URL")).toString() : QString();
    if (error || url.isEmpty()) {
        platform::log(QStringLiteral("The server names no address for the update."));
        return;
    }
    const std::lock_guard lock(downloadMutex);
    if (stop.isStopped() || handedOver)
        return;
    const QString name = UpdateAnswer::imageName(networking.dicUpdateVersion());
    QString problem;
    if (const DownloadFault fault = prepareTarget(name); fault != DownloadFault::None)
        problem = downloadFaultText(fault, name);
    else
        problem = download(url, places.downloads + u'/' + name, stop);
    if (!problem.isNull())
        fail(problem);
}

DownloadFault DownloadApp::prepareTarget(const QString &name)
{
    using DownloadTarget::Occupant;
    if (!mayReplaceBundle())
        return DownloadFault::NotYours;
    if (!DownloadTarget::isFileName(name))
        return DownloadFault::NameRefused;
    if (!FileManagerCreate::createDirectoryIfNotExist(places.downloads))
        return DownloadFault::CannotStore;
    const QString target = places.downloads + u'/' + name;
    if (DownloadTarget::occupantOf(target) == Occupant::File)
        remove(target);
    return DownloadTarget::occupantOf(target) == Occupant::Nobody ? DownloadFault::None : DownloadFault::TargetTaken;
}

QString DownloadApp::download(const QString &url, const QString &target, StopSignal &stop)
{
    progress = 0.0;
    ImageSink sink(target,
                   [this, target](qint64 written, qint64 expected) { bytesWritten(written, expected, target); });
    HttpRequest request;
    request.url = url;
    request.method = "GET";
    request.sink = &sink;
    request.stop = &stop;
    request.stallTimeout = stallTimeout;
    request.replyLimit = LongestRefusal;
    const HttpReply reply = transport.send(request);
    // Whatever the connection did after the last byte: the image was whole, and what follows was told on the way.
    return sink.isKept() || isCancelled(reply.error) ? QString() : reasonOf(sink, reply);
}

void DownloadApp::bytesWritten(qint64 written, qint64 expected, const QString &target)
{
    const float ratio = static_cast<float>(written) / static_cast<float>(expected);
    const double percent = 100.0F * ratio;
    if (percent - progress >= 1.0) {
        progress = percent;
        const std::lock_guard lock(delegateMutex);
        if (progressDelegate)
            progressDelegate->updateDownloadAppProgress(percent);
    }
    // Of a large image the ratio is rounded to the whole while the last bytes are still missing.
    if (ratio == 1.0F && written == expected)
        install(target);
}

void DownloadApp::install(const QString &target)
{
    if (const DownloadFault fault = handOver(target); fault != DownloadFault::None) {
        ejectQuillboxRelevantMountDisk();
        fail(downloadFaultText(fault, target));
        return;
    }
    handedOver = true;
    const std::lock_guard lock(delegateMutex);
    if (progressDelegate)
        progressDelegate->doSthDownloadAppVersionComplete();
}

void DownloadApp::fail(const QString &text)
{
    const std::lock_guard lock(delegateMutex);
    if (progressDelegate)
        progressDelegate->doSthDownloadEroor();
    if (errorDelegate)
        errorDelegate->DisplayServerSettingWindow(text);
}

void DownloadApp::remove(const QString &path)
{
    DownloadTarget::remove(path, [this](const QString &command) {
        commands.run(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command});
    });
}
