#include "HttpFront.h"

#include "ConnectionThreads.h"
#include "OpenConnections.h"

#include <httplib.h>

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qint64 mostSkipped = qint64(1) << 30;
constexpr size_t longestBody = size_t(1) << 51;
constexpr size_t largestPart = 1024 * 1024;
constexpr size_t longestPath = 256;
constexpr size_t mostConnections = 256;
constexpr int waitingConnections = 256;

/// Sends what the stream gives, up to the planned cut, after which the connection ends.
void sendStream(httplib::Response &response, const Reply &reply)
{
    const std::shared_ptr<const ReplyStream> stream = reply.stream;
    // The library announces the length of an empty body only where nobody provides it.
    if (stream->size() == 0)
        return response.set_content(std::string(), reply.type.constData());
    const bool isCut = reply.cutAfter >= 0 && reply.cutAfter <= stream->size();
    const qint64 end = isCut ? reply.cutAfter : stream->size();
    const size_t capacity = std::clamp<size_t>(static_cast<size_t>(stream->size()), 1, largestPart);
    const std::shared_ptr<char[]> buffer(new char[capacity]); // filled before it is read
    const auto provide = [=](size_t offset, size_t length, httplib::DataSink &sink) {
        const qint64 position = static_cast<qint64>(offset);
        const size_t most = std::min(length, capacity);
        const qint64 count =
            stream->read(position, buffer.get(), std::min<qint64>(static_cast<qint64>(most), end - position));
        const bool sent = count > 0 && sink.write(buffer.get(), static_cast<size_t>(count));
        return sent && !(isCut && position + count == end);
    };
    response.set_content_provider(static_cast<size_t>(stream->size()), reply.type.constData(), provide);
}

/// Sends the body and then a blank now and then, until the client hangs up or the server stops.
void sendWithoutEnd(httplib::Response &response, const Reply &reply)
{
    const auto begin = std::make_shared<QByteArray>(reply.body);
    response.set_chunked_content_provider(reply.type.constData(), [begin](size_t, httplib::DataSink &sink) {
        if (begin->isEmpty())
            std::this_thread::sleep_for(std::chrono::milliseconds(200));
        const QByteArray part = begin->isEmpty() ? QByteArrayLiteral(" ") : std::exchange(*begin, {});
        return sink.write(part.constData(), static_cast<size_t>(part.size()));
    });
}

void send(httplib::Response &response, const Reply &reply)
{
    response.status = reply.status;
    for (const auto &[name, value] : reply.headers)
        response.set_header(name.constData(), value.constData());
    if (reply.neverEnds)
        return sendWithoutEnd(response, reply);
    if (reply.stream)
        return sendStream(response, reply);
    if (reply.cutAfter >= 0 && reply.cutAfter <= reply.body.size()) {
        Reply cut = reply;
        cut.stream = std::make_shared<ReplyStream>(reply.body);
        return sendStream(response, cut);
    }
    response.set_content(std::string(reply.body.constData(), static_cast<size_t>(reply.body.size())),
                         reply.type.constData());
}

/// What the body's type is, under a name that keeps the library from taking the body apart by itself.
const char *const typeHeader = "Quillbox-Body-Type";

/// Routing is told of a request that nobody else sees yet, so it can still be put right.
void prepare(const httplib::Request &request)
{
    auto &open = const_cast<httplib::Request &>(request);
    const std::string type = request.get_header_value("Content-Type");
    open.headers.erase("Content-Type");
    open.headers.erase(typeHeader);
    open.headers.emplace(typeHeader, type);
    // Ranges are asked for in bodies here; of whole replies there are none.
    if (request.method == "POST")
        open.ranges.clear();
}

enum class BodyEnd { Complete, Skipped, Broken };

/// Gives the body to the receiver. Refused bodies are read past, for many clients listen only when they have sent all.
BodyEnd readBody(const httplib::Request &request, const httplib::ContentReader &reader, BodyReceiver *receiver)
{
    // A body without length would last until the client hangs up.
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
        return BodyEnd::Complete;
    qint64 total = 0;
    qint64 skipped = 0;
    const bool complete = reader([&](const char *data, size_t size) {
        const qint64 length = static_cast<qint64>(size);
        total += length;
        if (receiver->cutAfter >= 0 && total > receiver->cutAfter) {
            cutConnection(request.local_port, request.remote_port);
            return false;
        }
        receiver->take(data, length);
        skipped += receiver->wantsMore() ? 0 : length;
        return skipped <= mostSkipped;
    });
    if (complete)
        return BodyEnd::Complete;
    return skipped > mostSkipped ? BodyEnd::Skipped : BodyEnd::Broken;
}

QByteArray queryOf(const httplib::Request &request)
{
    const QByteArray target = QByteArray::fromStdString(request.target);
    const qsizetype mark = target.indexOf('?');
    return mark < 0 ? QByteArray() : target.mid(mark + 1);
}

} // namespace

HttpFront::HttpFront(Handlers given, const Identity *identity)
    : handlers(std::move(given)), isEncrypted(identity != nullptr)
{
    if (identity)
        server = std::make_unique<httplib::SSLServer>(identity->certificate.get(), identity->key.get());
    else
        server = std::make_unique<httplib::Server>();
    limit();
    addRoutes();
}

HttpFront::~HttpFront()
{
    stop();
}

void HttpFront::limit()
{
    server->new_task_queue = [] { return new ConnectionThreads(mostConnections); };
    server->set_socket_options([this](int socket) {
        // No sharing of the port with another process that happens to ask for it too.
        const int yes = 1;
        ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
        listening = socket;
    });
    server->set_tcp_nodelay(true);
    server->set_keep_alive_max_count(1'000'000);
    server->set_keep_alive_timeout(30);
    server->set_read_timeout(10);
    server->set_write_timeout(10);
    server->set_payload_max_length(longestBody);
    server->set_pre_routing_handler([](const httplib::Request &request, httplib::Response &response) {
        const bool isCall = request.method == "POST" || request.method == "GET" || request.method == "HEAD";
        prepare(request);
        if (isCall && request.path.size() <= longestPath)
            return httplib::Server::HandlerResponse::Unhandled;
        send(response, replyFor(ApiError{isCall ? UnknownMethod : MethodNotAllowed, {}, {}, {}}));
        return httplib::Server::HandlerResponse::Handled;
    });
}

void HttpFront::addRoutes()
{
    server->Post(".*", [this](const auto &request, auto &response, const httplib::ContentReader &reader) {
        answerCall(request, response, reader);
    });
    server->Get("/download/.*", [this](const auto &request, auto &response) { answerDownload(request, response); });
    server->Get(".*", [this](const auto &request, auto &response) { send(response, handlers.page(headOf(request))); });
    server->set_exception_handler([](const auto &, auto &response, const std::exception_ptr &) {
        send(response, replyFor(ApiError{InternalError, {}, {}, {}}));
    });
    server->set_error_handler([](const httplib::Request &, httplib::Response &response) {
        if (!response.has_header("Content-Type")) // not ours
            send(response, replyFor(ApiError{NotJson, {}, u"not an HTTP request"_s, {}, response.status}));
    });
}

RequestHead HttpFront::headOf(const httplib::Request &request) const
{
    static const QRegularExpression hostPattern(u"^[A-Za-z0-9.:\\[\\]-]{1,255}$"_s);
    QString host = QString::fromStdString(request.get_header_value("Host"));
    if (!hostPattern.match(host).hasMatch())
        host = u"127.0.0.1:%1"_s.arg(boundPort);
    return {QString::fromStdString(request.path),
            queryOf(request),
            QByteArray::fromStdString(request.get_header_value(typeHeader)),
            QByteArray::fromStdString(request.get_header_value("Accept-Language")),
            (isEncrypted ? u"https://"_s : u"http://"_s) + host,
            QByteArray::fromStdString(request.get_header_value("Origin"))};
}

void HttpFront::answerCall(const httplib::Request &request, httplib::Response &response,
                           const httplib::ContentReader &reader) const
{
    const auto receiver = handlers.receive(headOf(request));
    const BodyEnd end = readBody(request, reader, receiver.get());
    const ApiError broken{NotJson, {}, u"the request ends before its end"_s, {}};
    Reply reply = end == BodyEnd::Broken ? replyFor(broken) : handlers.finish(*receiver);
    // What was not read must not be taken for another request.
    if (end != BodyEnd::Complete && reply.cutAfter < 0)
        reply.cutAfter = reply.stream ? reply.stream->size() : reply.body.size();
    send(response, reply);
}

void HttpFront::answerDownload(const httplib::Request &request, httplib::Response &response) const
{
    const QString name = QString::fromStdString(request.path).section(u'/', 2);
    const auto file = std::make_shared<QFile>(handlers.findFile(name));
    if (file->fileName().isEmpty() || !file->open(QIODevice::ReadOnly))
        return send(response, replyFor(ApiError{UnknownMethod, {}, {}, {}}));
    const auto provide = [file](size_t offset, size_t length, httplib::DataSink &sink) {
        if (!file->seek(static_cast<qint64>(offset)))
            return false;
        const QByteArray part = file->read(static_cast<qint64>(std::min<size_t>(length, 64 * 1024)));
        return !part.isEmpty() && sink.write(part.constData(), static_cast<size_t>(part.size()));
    };
    response.set_content_provider(static_cast<size_t>(file->size()), "application/octet-stream", provide);
}

bool HttpFront::listen(const QString &host, int port, QString *error)
{
    const std::string address = host.toStdString();
    if (port == 0)
        boundPort = server->bind_to_any_port(address);
    else
        boundPort = server->bind_to_port(address, port) ? port : -1;
    if (boundPort <= 0) {
        *error = u"cannot listen on %1 port %2: it is in use or not allowed"_s.arg(host).arg(port);
        return false;
    }
    // The library lets so few connections wait that a burst of them is delayed by seconds.
    ::listen(listening, waitingConnections);
    listener = std::thread([this] {
        server->listen_after_bind();
        ended = true;
    });
    // Before it runs, a request to stop would be lost.
    while (!server->is_running() && !ended)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
}

void HttpFront::stop()
{
    if (!listener.joinable())
        return;
    server->stop();
    // Again and again, for a connection that was just being accepted may come to life after the first cut.
    while (!ended) {
        cutConnections(boundPort);
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    listener.join();
    boundPort = -1;
}

} // namespace documentserver
