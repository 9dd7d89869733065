#include "support/ScriptedServer.h"

#include "support/TestCertificate.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <openssl/ssl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <condition_variable>
#include <csignal>
#include <deque>
#include <functional>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

namespace testing
{

namespace
{

constexpr auto patience = std::chrono::seconds(10);

/// One accepted connection, encrypted or not.
class Connection
{
public:
    explicit Connection(int socket) : descriptor(socket) {}
    ~Connection()
    {
        SSL_free(ssl);
        close(descriptor);
    }
    Connection(const Connection &) = delete;
    Connection &operator=(const Connection &) = delete;

    /// True when the client begins with a TLS handshake.
    bool beginsSecurely() const
    {
        char first = 0;
        return recv(descriptor, &first, 1, MSG_PEEK) == 1 && first == '\x16';
    }

    bool handshake(SSL_CTX *context)
    {
        ssl = SSL_new(context);
        SSL_set_fd(ssl, descriptor);
        return SSL_accept(ssl) == 1;
    }

    QByteArray read()
    {
        QByteArray bytes(16384, '\0');
        const auto got = ssl ? SSL_read(ssl, bytes.data(), static_cast<int>(bytes.size()))
                             : static_cast<int>(recv(descriptor, bytes.data(), static_cast<size_t>(bytes.size()), 0));
        return bytes.left(std::max(0, got));
    }

    bool write(const QByteArray &bytes)
    {
        for (qsizetype sent = 0; sent < bytes.size();) {
            const auto left = static_cast<int>(bytes.size() - sent);
            const auto more = ssl ? SSL_write(ssl, bytes.constData() + sent, left)
                                  : static_cast<int>(send(descriptor, bytes.constData() + sent,
                                                          static_cast<size_t>(left), MSG_NOSIGNAL));
            if (more <= 0)
                return false;
            sent += more;
        }
        return true;
    }

    void interrupt() { shutdown(descriptor, SHUT_RDWR); }

private:
    const int descriptor;
    SSL *ssl = nullptr;
};

SSL_CTX *makeContext()
{
    // A write to a client that is gone must not end the test program.
    std::signal(SIGPIPE, SIG_IGN);
    const TestCertificate pair = TestCertificate::make(2048);
    SSL_CTX *context = SSL_CTX_new(TLS_server_method());
    SSL_CTX_use_certificate_ASN1(context, static_cast<int>(pair.certificate.size()),
                                 reinterpret_cast<const unsigned char *>(pair.certificate.constData()));
    SSL_CTX_use_PrivateKey_ASN1(EVP_PKEY_RSA, context, reinterpret_cast<const unsigned char *>(pair.key.constData()),
                                static_cast<long>(pair.key.size()));
    return context;
}

qsizetype contentLength(const QByteArray &head)
{
    const QByteArray lower = head.toLower();
    const qsizetype at = lower.indexOf("content-length:");
    return at < 0 ? 0 : lower.mid(at + 15, lower.indexOf('\r', at) - at - 15).trimmed().toLongLong();
}

/// Takes one whole request off the front of `buffer`, null when it is not all there yet.
QByteArray takeRequest(QByteArray &buffer)
{
    const qsizetype end = buffer.indexOf("\r\n\r\n");
    if (end < 0)
        return {};
    const qsizetype whole = end + 4 + contentLength(buffer.left(end + 2));
    if (buffer.size() < whole)
        return {};
    const QByteArray request = buffer.left(whole);
    buffer.remove(0, whole);
    return request;
}

} // namespace

ScriptedAnswer ScriptedAnswer::reply(const QByteArray &body, int status, const QByteArray &extraHeaders)
{
    return {"HTTP/1.1 " + QByteArray::number(status) +
            " Scripted\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + extraHeaders + "\r\n" + body};
}

ScriptedAnswer ScriptedAnswer::json(const QByteArray &body, int status)
{
    return reply(body, status, "Content-Type: application/json\r\n");
}

ScriptedAnswer ScriptedAnswer::redirect(const QString &url, int status)
{
    return reply("moved", status, "Location: " + url.toUtf8() + "\r\n");
}

ScriptedAnswer ScriptedAnswer::raw(const QByteArray &bytes)
{
    return {bytes, Ending::Close};
}

ScriptedAnswer ScriptedAnswer::hang()
{
    return {{}, Ending::Hang};
}

class ScriptedServer::Private
{
public:
    struct Step {
        QByteArray start;
        ScriptedAnswer answer;
    };

    void accept();
    void serve(Connection &connection);
    bool answer(Connection &connection, const ScriptedAnswer &answer);
    ScriptedAnswer next(const QByteArray &request);
    bool waitUntil(const std::function<bool()> &condition);

    int listener = -1;
    int port = 0;
    Security security = Security::Plain;
    SSL_CTX *context = nullptr;
    std::thread acceptor;

    mutable std::mutex mutex; ///< guards what follows
    std::condition_variable changed;
    std::deque<Step> script;
    std::unique_ptr<ScriptedAnswer> always;
    QByteArrayList requests;
    QString complaint;
    int accepted = 0;
    std::set<Connection *> open;
    std::vector<std::thread> threads;
    bool stopping = false;
};

void ScriptedServer::Private::accept()
{
    for (;;) {
        const int descriptor = ::accept(listener, nullptr, nullptr);
        if (descriptor < 0)
            return;
        const int yes = 1;
        setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
        auto connection = std::make_shared<Connection>(descriptor);
        const std::lock_guard lock(mutex);
        if (stopping)
            return;
        ++accepted;
        open.insert(connection.get());
        threads.emplace_back([this, connection] {
            serve(*connection);
            connection->interrupt();
            const std::lock_guard done(mutex);
            open.erase(connection.get());
            changed.notify_all();
        });
    }
}

void ScriptedServer::Private::serve(Connection &connection)
{
    const bool securely = connection.beginsSecurely();
    if (securely && security == Security::Plain)
        connection.write("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n");
    if (securely != (security == Security::Tls) && security != Security::Either)
        return;
    if (securely && !connection.handshake(context))
        return;
    QByteArray buffer;
    for (;;) {
        const QByteArray request = takeRequest(buffer);
        if (request.isNull()) {
            const QByteArray bytes = connection.read();
            if (bytes.isEmpty())
                return;
            buffer += bytes;
        } else if (!answer(connection, next(request))) {
            return;
        }
    }
}

ScriptedAnswer ScriptedServer::Private::next(const QByteArray &request)
{
    const std::lock_guard lock(mutex);
    requests.append(request);
    changed.notify_all();
    if (script.empty()) {
        if (always)
            return *always;
        complaint += QStringLiteral("unexpected request: %1\n").arg(QString::fromUtf8(request.left(200)));
        return ScriptedAnswer::raw("HTTP/1.1 500 Unexpected\r\nContent-Length: 0\r\n\r\n");
    }
    const Step step = script.front();
    script.pop_front();
    if (!request.startsWith(step.start))
        complaint += QStringLiteral("expected %1, got %2\n")
                         .arg(QString::fromUtf8(step.start), QString::fromUtf8(request.left(200)));
    return step.answer;
}

/// False when the connection ends with this answer.
bool ScriptedServer::Private::answer(Connection &connection, const ScriptedAnswer &answer)
{
    if (answer.drip.count() == 0) {
        if (!connection.write(answer.bytes))
            return false;
    } else {
        for (const char byte : answer.bytes) {
            if (!connection.write(QByteArray(1, byte)))
                return false;
            std::unique_lock lock(mutex);
            if (changed.wait_for(lock, answer.drip, [this] { return stopping; }))
                return false;
        }
    }
    if (answer.ending == ScriptedAnswer::Ending::Hang)
        connection.read(); // until the client or the test ends it
    return answer.ending == ScriptedAnswer::Ending::KeepOpen;
}

bool ScriptedServer::Private::waitUntil(const std::function<bool()> &condition)
{
    std::unique_lock lock(mutex);
    return changed.wait_for(lock, patience, condition);
}

ScriptedServer::ScriptedServer(Security security) : d(std::make_unique<Private>())
{
    d->security = security;
    if (security != Security::Plain)
        d->context = makeContext();
    d->listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(d->listener, reinterpret_cast<sockaddr *>(&address), length) != 0 || listen(d->listener, 128) != 0 ||
        getsockname(d->listener, reinterpret_cast<sockaddr *>(&address), &length) != 0)
        qFatal("no loopback port");
    d->port = ntohs(address.sin_port);
    d->acceptor = std::thread([this] { d->accept(); });
}

ScriptedServer::~ScriptedServer()
{
    stop();
    SSL_CTX_free(d->context);
}

void ScriptedServer::stop()
{
    if (d->listener < 0)
        return;
    {
        const std::lock_guard lock(d->mutex);
        d->stopping = true;
        for (Connection *connection : d->open)
            connection->interrupt();
        d->changed.notify_all();
    }
    shutdown(d->listener, SHUT_RDWR);
    d->acceptor.join();
    close(d->listener);
    d->listener = -1;
    for (std::thread &thread : d->threads)
        thread.join();
    d->threads.clear();
}

ScriptedServer &ScriptedServer::expect(const QByteArray &start, const ScriptedAnswer &answer)
{
    const std::lock_guard lock(d->mutex);
    d->script.push_back({start, answer});
    return *this;
}

void ScriptedServer::answerAll(const ScriptedAnswer &answer)
{
    const std::lock_guard lock(d->mutex);
    d->always = std::make_unique<ScriptedAnswer>(answer);
}

int ScriptedServer::port() const
{
    return d->port;
}

QString ScriptedServer::url(const QString &path) const
{
    return QStringLiteral("http%1://127.0.0.1:%2%3")
        .arg(d->security == Security::Tls ? QStringLiteral("s") : QString(), portText(), path);
}

QByteArrayList ScriptedServer::requests() const
{
    const std::lock_guard lock(d->mutex);
    return d->requests;
}

QByteArrayList ScriptedServer::bodies() const
{
    QByteArrayList all;
    for (const QByteArray &request : requests())
        all.append(request.mid(request.indexOf("\r\n\r\n") + 4));
    return all;
}

int ScriptedServer::connections() const
{
    const std::lock_guard lock(d->mutex);
    return d->accepted;
}

int ScriptedServer::openConnections() const
{
    const std::lock_guard lock(d->mutex);
    return static_cast<int>(d->open.size());
}

bool ScriptedServer::waitForRequests(int count) const
{
    return d->waitUntil([this, count] { return d->requests.size() >= count; });
}

bool ScriptedServer::waitForOpenConnections(int count) const
{
    return d->waitUntil([this, count] { return static_cast<int>(d->open.size()) == count; });
}

QString ScriptedServer::complaint() const
{
    const std::lock_guard lock(d->mutex);
    QString text = d->complaint;
    for (const Private::Step &step : d->script)
        text += QStringLiteral("never came: %1\n").arg(QString::fromUtf8(step.start));
    return text;
}

} // namespace testing
