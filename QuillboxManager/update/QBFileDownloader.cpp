#include "update/QBFileDownloader.h"

#include "platform/Dispatch.h"
#include "platform/FileDescriptor.h"
#include "platform/Localization.h"
#include "platform/Log.h"

#include <QFile>

#include <algorithm>
#include <mutex>
#include <optional>
#include <utility>

#include <fcntl.h>

namespace
{

const QString urlKey = QStringLiteral("URL");
const QString methodKey = QStringLiteral("Method");

bool isToken(const QByteArray &name)
{
    const auto fits = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               QByteArrayView("!#$%&'*+-.^_`|~").contains(c);
    };
    return !name.isEmpty() && std::all_of(name.cbegin(), name.cend(), fits);
}

bool isFieldValue(const QByteArray &value)
{
    const auto fits = [](char c) { return c == '\t' || (static_cast<unsigned char>(c) >= 0x20 && c != 0x7F); };
    return std::all_of(value.cbegin(), value.cend(), fits);
}

/// Fields by which the transport frames the exchange: nobody else's business.
bool isTransportsOwn(const QByteArray &name)
{
    static const QByteArrayList own{"connection", "content-length", "expect",  "host",
                                    "te",         "trailer",        "upgrade", "transfer-encoding"};
    return own.contains(name.toLower());
}

/// Nothing for a description that could say something else on the wire than it seems to.
std::optional<HttpRequest> requestFor(const QBFileDownloader::Information &information)
{
    constexpr qsizetype mostFieldBytes = 64 * 1024;
    HttpRequest request;
    request.url = information.value(urlKey);
    request.method = information.value(methodKey, QStringLiteral("GET")).toUtf8();
    request.stallTimeout = std::chrono::seconds(60);
    qsizetype fieldBytes = 0;
    for (auto field = information.cbegin(); field != information.cend(); ++field) {
        if (field.key() == urlKey || field.key() == methodKey)
            continue;
        const QByteArray name = field.key().toUtf8();
        const QByteArray value = field.value().toUtf8();
        fieldBytes += name.size() + value.size();
        if (!isToken(name) || !isFieldValue(value) || fieldBytes > mostFieldBytes)
            return std::nullopt;
        if (!isTransportsOwn(name))
            request.headers.append({name, value});
    }
    return request;
}

} // namespace

/// One transfer, shared by its thread and the downloader.
class QBFileDownloader::Connection : public ReplySink
{
public:
    explicit Connection(const std::shared_ptr<const QBDownloadFile> &destination) : file(destination) {}

    /// Blocks until the end; false when it failed.
    bool run(HttpTransport &transport, HttpRequest request)
    {
        request.sink = this;
        request.stop = &stop;
        if (transport.send(request).error)
            return false;
        didReceiveResponse(); // one without a body has not been told yet
        const std::lock_guard lock(writing);
        return fileHandle.close();
    }
    /// Nothing is written after it.
    void abandon()
    {
        stop.stop();
        const std::lock_guard lock(writing);
        fileHandle.close();
    }

    bool takes(int, const QByteArray &) override
    {
        didReceiveResponse();
        return true;
    }
    bool write(const char *bytes, qint64 count) override { return didReceiveData(bytes, count); }

private:
    void didReceiveResponse()
    {
        if (std::exchange(responded, true))
            return;
        const QString path = file ? file->backupPath() : QString();
        const std::lock_guard lock(writing);
        if (stop.isStopped())
            return;
        fileHandle =
            platform::FileDescriptor(::open(QFile::encodeName(path).constData(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
        if (!fileHandle.isOpen())
            platform::log(platform::fillPlaceholders(QStringLiteral("ERROR: fileHandleForUpdatingAtPath %@"), {path}));
    }

    bool didReceiveData(const char *bytes, qint64 count)
    {
        const std::lock_guard lock(writing);
        while (fileHandle.isOpen() && count > 0) {
            const ssize_t put = ::write(fileHandle.get(), bytes, static_cast<std::size_t>(count));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0)
                return false;
            bytes += put;
            count -= put;
        }
        return true;
    }

    const std::shared_ptr<const QBDownloadFile> file;
    StopSignal stop;
    bool responded = false;
    std::mutex writing; ///< guards what follows
    platform::FileDescriptor fileHandle;
};

std::unique_ptr<QBFileDownloader>
QBFileDownloader::downloaderWithFile(const std::shared_ptr<const QBDownloadFile> &file)
{
    return std::make_unique<QBFileDownloader>(file);
}

QBFileDownloader::QBFileDownloader(const std::shared_ptr<const QBDownloadFile> &destination, HttpTransport &http,
                                   QObject *parent)
    : QObject(parent), file(destination), transport(http)
{
}

QBFileDownloader::~QBFileDownloader()
{
    if (urlConnection)
        urlConnection->abandon();
}

void QBFileDownloader::downloadWithInfomation(const Information &information, CompleteHandle complete)
{
    abandon();
    const auto connection = std::make_shared<Connection>(file);
    urlConnection = connection;
    completeHandle = std::move(complete);
    platform::inBackground(
        this,
        [connection, &http = transport, request = requestFor(information)] {
            return request && connection->run(http, *request);
        },
        [this, connection](bool succeeded) { finish(connection, succeeded); });
}

void QBFileDownloader::abandon()
{
    if (!urlConnection)
        return;
    urlConnection->abandon();
    finish(urlConnection, false);
}

void QBFileDownloader::finish(const std::shared_ptr<Connection> &connection, bool succeeded)
{
    if (connection != urlConnection)
        return;
    connection->abandon(); // closes the file
    urlConnection.reset();
    // It may start the next download or destroy this object.
    const CompleteHandle complete = std::exchange(completeHandle, nullptr);
    if (complete)
        complete(succeeded ? QBError() : QBError(QBError::serverDomain(), FailureCode));
}
