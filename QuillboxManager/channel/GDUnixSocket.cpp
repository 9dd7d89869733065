#include "channel/GDUnixSocket.h"

#include "channel/SystemSocket.h"
#include "channel/WriteQueue.h"
#include "platform/Dispatch.h"

#include <QDir>
#include <QUuid>

#include <cerrno>
#include <utility>

using namespace GDUnixSocketErrors;

namespace
{
const QString pathOfAccepted = QStringLiteral("(dummy)");
}

GDUnixSocket::GDUnixSocket(const QString &socketPath, std::size_t fragmentSize)
    : path(socketPath), fragment(fragmentSize > 0 ? fragmentSize : defaultFragmentSize),
      writes(std::make_shared<WriteQueue>())
{
}

GDUnixSocket::~GDUnixSocket()
{
    if (current)
        current->close();
}

std::shared_ptr<GDUnixSocket> GDUnixSocket::initWithSocketPath(const QString &path, std::size_t fragmentSize)
{
    if (!isSocketPath(path))
        return nullptr;
    return std::shared_ptr<GDUnixSocket>(new GDUnixSocket(path, fragmentSize));
}

std::shared_ptr<GDUnixSocket> GDUnixSocket::initWithDescriptor(platform::FileDescriptor accepted,
                                                               std::size_t fragmentSize)
{
    const auto socket = initWithSocketPath(pathOfAccepted, fragmentSize);
    socket->setState(socket->adopt(std::move(accepted)), State::Connected);
    return socket;
}

bool GDUnixSocket::isSocketPath(const QString &path)
{
    constexpr qsizetype limit = 104;
    if (path.isEmpty() || path.toUtf8().size() >= limit)
        return false;
    if (path == pathOfAccepted)
        return true;
    // Standardizing a path also expands the home folder's sign.
    return path.contains(u'/') && !path.startsWith(u'~') && QDir::cleanPath(path) == path;
}

int GDUnixSocket::fd() const
{
    const std::lock_guard lock(mutex);
    return current ? current->number() : -1;
}

QString GDUnixSocket::uniqueID() const
{
    const std::lock_guard lock(mutex);
    if (identifier.isNull())
        identifier = QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper();
    return identifier;
}

GDUnixSocket::State GDUnixSocket::state() const
{
    const std::lock_guard lock(mutex);
    return currentState;
}

std::optional<QByteArray> GDUnixSocket::readWithError(QBError *error)
{
    QBError failure;
    const SocketDescriptor::Use use(descriptor());
    const auto data = readFromSocket(use.number(), fragment, &failure);
    didRead(data, failure);
    handOver(error, failure);
    return data;
}

void GDUnixSocket::readWithCompletion(ReadCompletion completion)
{
    // The blocked read holds only the socket: destroying this object ends it.
    platform::dispatchGlobal(
        [weak = weak_from_this(), source = descriptor(), size = fragment, completion = std::move(completion)] {
            QBError failure;
            const SocketDescriptor::Use use(source);
            const auto data = readFromSocket(use.number(), size, &failure);
            if (const auto self = weak.lock())
                self->didRead(data, failure);
            if (completion)
                completion(failure, data);
        });
}

qint64 GDUnixSocket::writeData(const QByteArray &data, QBError *error)
{
    return write(data, descriptor(), error);
}

void GDUnixSocket::writeData(const QByteArray &data, WriteCompletion completion)
{
    writes->append([weak = weak_from_this(), data, completion = std::move(completion)] {
        Descriptor target;
        if (const auto self = weak.lock())
            target = self->descriptor();
        QBError failure;
        const qint64 count = write(data, target, &failure);
        if (completion)
            completion(failure, count);
    });
}

bool GDUnixSocket::closeWithError(QBError *error)
{
    return closeDescriptor(error);
}

QBError GDUnixSocket::checkForBadSocket(int socket)
{
    return socket == -1 ? gduds_errorForCode(BadSocket) : QBError();
}

QString GDUnixSocket::lastErrorInfoForSocket(int socket)
{
    return systemErrorInfo(socket, errno);
}

GDUnixSocket::Descriptor GDUnixSocket::adopt(platform::FileDescriptor opened)
{
    const auto adopted = std::make_shared<SocketDescriptor>(std::move(opened));
    const std::lock_guard lock(mutex);
    if (current)
        current->close();
    current = adopted;
    currentState = State::NotConnected;
    return adopted;
}

GDUnixSocket::Descriptor GDUnixSocket::descriptor() const
{
    const std::lock_guard lock(mutex);
    return current;
}

bool GDUnixSocket::setState(const Descriptor &of, State state)
{
    const std::lock_guard lock(mutex);
    if (current != of)
        return false;
    currentState = state;
    return true;
}

bool GDUnixSocket::closeDescriptor(QBError *error)
{
    const std::lock_guard lock(mutex);
    handOver(error, {});
    if (currentState == State::Closed)
        return true;
    if (!current) {
        handOver(error, gduds_errorForCode(Close, checkForBadSocket(-1).localizedDescription()));
        return false;
    }
    const Descriptor closing = std::exchange(current, nullptr);
    if (const int failure = closing->close()) {
        handOver(error, gduds_errorForCode(Close, systemErrorInfo(closing->number(), failure)));
        return false;
    }
    currentState = State::Closed;
    return true;
}

void GDUnixSocket::closeIfCurrent(const Descriptor &expected)
{
    const std::lock_guard lock(mutex);
    if (!expected || current != expected)
        return;
    current->close();
    current.reset();
    currentState = State::Closed;
}

std::optional<QByteArray> GDUnixSocket::readFromSocket(int socket, std::size_t fragmentSize, QBError *error)
{
    QByteArray buffer(static_cast<qsizetype>(fragmentSize), '\0');
    ssize_t count;
    do
        count = ::read(socket, buffer.data(), fragmentSize);
    while (count < 0 && errno == EINTR);
    handOver(error, count < 0 ? gduds_errorForCode(Read, lastErrorInfoForSocket(socket)) : QBError());
    if (count <= 0)
        return std::nullopt;
    buffer.truncate(count);
    return buffer;
}

qint64 GDUnixSocket::write(const QByteArray &data, const Descriptor &toSocket, QBError *error)
{
    handOver(error, {});
    if (data.isEmpty())
        return 0;
    const SocketDescriptor::Use use(toSocket);
    if (const QBError bad = checkForBadSocket(use.number())) {
        handOver(error, bad);
        return -1;
    }
    const std::lock_guard alone(use.writing());
    const ssize_t count = SystemSocket::send(use.number(), data.constData(), static_cast<std::size_t>(data.size()));
    if (count < 0)
        handOver(error, gduds_errorForCode(Write, lastErrorInfoForSocket(use.number())));
    return count;
}

void GDUnixSocket::didRead(const std::optional<QByteArray> &, const QBError &) {}
