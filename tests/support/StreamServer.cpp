#include "support/StreamServer.h"

#include "platform/FileDescriptor.h"

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace testing
{

class StreamServer::Private
{
public:
    explicit Private(const StreamScript &given) : script(given) {}

    void run();
    void serve(int connection);
    bool takeRequest(int connection);
    bool send(int connection, const char *bytes, qint64 count);
    bool sendZeros(int connection);
    qint64 receive(int connection, char *into, qint64 most);
    void hang();

    const StreamScript script;
    platform::FileDescriptor listener;
    int port = 0;
    std::thread thread;

    mutable std::mutex mutex; ///< guards what follows
    mutable std::condition_variable changed;
    qint64 received = 0;
    qint64 sent = 0;
    int current = -1; ///< the connection being served
    bool stopping = false;
};

void StreamServer::Private::run()
{
    for (;;) {
        const platform::FileDescriptor connection(accept(listener.get(), nullptr, nullptr));
        {
            const std::lock_guard lock(mutex);
            if (!connection.isOpen() || stopping)
                return;
            current = connection.get();
        }
        serve(connection.get());
        const std::lock_guard lock(mutex);
        current = -1;
    }
}

void StreamServer::Private::serve(int connection)
{
    while (takeRequest(connection)) {
        if (!send(connection, script.head.constData(), script.head.size()) ||
            !send(connection, script.before.constData(), script.before.size()) || !sendZeros(connection) ||
            !send(connection, script.after.constData(), script.after.size()))
            return;
    }
}

qint64 StreamServer::Private::receive(int connection, char *into, qint64 most)
{
    const qint64 got = recv(connection, into, static_cast<size_t>(most), 0);
    const std::lock_guard lock(mutex);
    received += std::max<qint64>(0, got);
    changed.notify_all();
    return got;
}

/// Head byte by byte, then the body in large pieces; false when there is no further request.
bool StreamServer::Private::takeRequest(int connection)
{
    QByteArray head;
    char byte = 0;
    while (!head.endsWith("\r\n\r\n")) {
        if (receive(connection, &byte, 1) != 1)
            return false;
        head += byte;
    }
    const qsizetype at = head.toLower().indexOf("content-length:");
    const qint64 length = at < 0 ? 0 : head.mid(at + 15, head.indexOf('\r', at) - at - 15).trimmed().toLongLong();
    QByteArray bin(256 * 1024, Qt::Uninitialized);
    const qint64 wanted = script.readAtMost < 0 ? length : std::min(length, script.readAtMost);
    for (qint64 taken = 0; taken < wanted;) {
        const qint64 got = receive(connection, bin.data(), std::min<qint64>(bin.size(), wanted - taken));
        if (got <= 0)
            return false;
        taken += got;
    }
    if (wanted < length)
        hang();
    return wanted == length;
}

bool StreamServer::Private::send(int connection, const char *bytes, qint64 count)
{
    while (count > 0) {
        const qint64 gone = ::send(connection, bytes, static_cast<size_t>(count), MSG_NOSIGNAL);
        if (gone <= 0)
            return false;
        bytes += gone;
        count -= gone;
        const std::lock_guard lock(mutex);
        sent += gone;
        changed.notify_all();
    }
    return true;
}

bool StreamServer::Private::sendZeros(int connection)
{
    const QByteArray zeros(script.chunk, '\0');
    for (qint64 left = script.zeros; left > 0;) {
        if (script.stallHalfway && left <= script.zeros / 2) {
            hang();
            return false;
        }
        const qint64 now = std::min(left, script.chunk);
        if (!send(connection, zeros.constData(), now))
            return false;
        left -= now;
        std::unique_lock lock(mutex);
        if (script.pause.count() > 0 && changed.wait_for(lock, script.pause, [this] { return stopping; }))
            return false;
    }
    return true;
}

/// Until the test ends it, without taking a byte off the socket.
void StreamServer::Private::hang()
{
    std::unique_lock lock(mutex);
    changed.wait(lock, [this] { return stopping; });
}

StreamServer::StreamServer(const StreamScript &script) : d(std::make_unique<Private>(script))
{
    d->listener = platform::FileDescriptor(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    if (bind(d->listener.get(), reinterpret_cast<sockaddr *>(&address), length) != 0 ||
        listen(d->listener.get(), 16) != 0 ||
        getsockname(d->listener.get(), reinterpret_cast<sockaddr *>(&address), &length) != 0)
        qFatal("no loopback port");
    d->port = ntohs(address.sin_port);
    d->thread = std::thread([this] { d->run(); });
}

StreamServer::~StreamServer()
{
    {
        const std::lock_guard lock(d->mutex);
        d->stopping = true;
        d->changed.notify_all();
        if (d->current >= 0)
            shutdown(d->current, SHUT_RDWR);
    }
    shutdown(d->listener.get(), SHUT_RDWR);
    d->thread.join();
}

int StreamServer::port() const
{
    return d->port;
}

qint64 StreamServer::received() const
{
    const std::lock_guard lock(d->mutex);
    return d->received;
}

qint64 StreamServer::sent() const
{
    const std::lock_guard lock(d->mutex);
    return d->sent;
}

bool StreamServer::waitForTraffic(qint64 bytes) const
{
    std::unique_lock lock(d->mutex);
    return d->changed.wait_for(lock, std::chrono::seconds(10),
                               [this, bytes] { return d->received + d->sent >= bytes; });
}

} // namespace testing
