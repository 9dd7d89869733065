#include "HttpFront.h"

#include "ConnectionThreads.h"
#include "OpenConnections.h"

#include <httplib.h>

#include <QFile>
#include <QFileInfo>

#include <chrono>

using namespace Qt::StringLiterals;

namespace documentserver
{

namespace
{
constexpr qsizetype largestBody = 1024 * 1024;
constexpr size_t mostSkipped = 16 * 1024 * 1024;
constexpr size_t longestPath = 256;
constexpr size_t mostConnections = 256;

void send(httplib::Response &response, const Reply &reply)
{
    response.status = reply.status;
    response.set_content(std::string(reply.body.constData(), static_cast<size_t>(reply.body.size())),
                         reply.type.constData());
}

/// Takes at most `largestBody` bytes and reads past what is more than that; false when the body was too large.
bool readBody(const httplib::Request &request, const httplib::ContentReader &reader, QByteArray *body)
{
    // A body without length would last until the client hangs up.
    if (!request.has_header("Content-Length") && !request.has_header("Transfer-Encoding"))
        return true;
    size_t total = 0;
    const bool complete = reader([&](const char *data, size_t length) {
        total += length;
        if (total <= size_t(largestBody))
            body->append(data, static_cast<qsizetype>(length));
        return total <= mostSkipped;
    });
    return complete && total <= size_t(largestBody);
}

QByteArray queryOf(const httplib::Request &request)
{
    const QByteArray target = QByteArray::fromStdString(request.target);
    const qsizetype mark = target.indexOf('?');
    return mark < 0 ? QByteArray() : target.mid(mark + 1);
}

/// No sharing of the port with another process that happens to ask for it too.
void setSocketOptions(int socket)
{
    const int yes = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
}
} // namespace

HttpFront::HttpFront(Handler given, FileFinder files, const Identity *identity)
    : handler(std::move(given)), finder(std::move(files))
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
    server->set_socket_options(setSocketOptions);
    server->set_tcp_nodelay(true);
    server->set_keep_alive_max_count(1'000'000);
    server->set_keep_alive_timeout(30);
    server->set_read_timeout(10);
    server->set_write_timeout(10);
    server->set_payload_max_length(mostSkipped);
    server->set_pre_routing_handler([](const httplib::Request &request, httplib::Response &response) {
        const bool isCall = request.method == "POST" || request.method == "GET" || request.method == "HEAD";
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
    server->Get(".*", [](const auto &, auto &response) {
        send(response, replyFor(ApiError{MethodNotAllowed, {}, {}, {}}));
    });
    server->set_exception_handler([](const auto &, auto &response, const std::exception_ptr &) {
        send(response, replyFor(ApiError{InternalError, {}, {}, {}}));
    });
    server->set_error_handler([](const httplib::Request &, httplib::Response &response) {
        if (response.body.empty())
            send(response, replyFor(ApiError{NotJson, {}, u"not an HTTP request"_s, {}, response.status}));
    });
}

void HttpFront::answerCall(const httplib::Request &request, httplib::Response &response,
                           const httplib::ContentReader &reader) const
{
    QByteArray body;
    if (!readBody(request, reader, &body))
        return send(response, replyFor(ApiError{TooLarge, {}, {}, {}}));
    send(response, handler(QString::fromStdString(request.path), queryOf(request), body));
}

void HttpFront::answerDownload(const httplib::Request &request, httplib::Response &response) const
{
    const QString name = QString::fromStdString(request.path).section(u'/', 2);
    const auto file = std::make_shared<QFile>(finder(name));
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
