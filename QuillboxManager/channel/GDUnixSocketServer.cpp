#include "channel/GDUnixSocketServer.h"

#include "channel/LoopThread.h"
#include "channel/SystemSocket.h"
#include "platform/Dispatch.h"
#include "platform/Log.h"

#include <QFile>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <cerrno>
#include <chrono>
#include <stdexcept>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

using namespace GDUnixSocketErrors;

namespace
{

/// Who could reach the socket's folder could put a file of their own in the socket's place. A folder that is not there
/// is left to bind, which says so.
bool isFolderOpenToOthers(const QString &socketPath)
{
    struct stat status;
    if (::stat(QFile::encodeName(QFileInfo(socketPath).path()).constData(), &status) != 0)
        return false;
    return status.st_uid != ::geteuid() || (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
}

} // namespace

GDUnixSocketServer::GDUnixSocketServer(const QString &listeningPath, std::size_t fragmentSize, uid_t user)
    : GDUnixSocket(listeningPath, fragmentSize), servedUser(user)
{
}

std::shared_ptr<GDUnixSocketServer> GDUnixSocketServer::initWithSocketPath(const QString &path,
                                                                           std::size_t fragmentSize)
{
    return initWithSocketPath(path, fragmentSize, ::geteuid());
}

std::shared_ptr<GDUnixSocketServer> GDUnixSocketServer::initWithSocketPath(const QString &path,
                                                                           std::size_t fragmentSize, uid_t servedUser)
{
    if (!isSocketPath(path))
        return nullptr;
    return std::shared_ptr<GDUnixSocketServer>(new GDUnixSocketServer(path, fragmentSize, servedUser));
}

GDUnixSocketServer::~GDUnixSocketServer()
{
    removeAllClients();
    if (state() == State::Listening)
        unlinkSocket();
    closeDescriptor(nullptr);
}

void GDUnixSocketServer::setDelegate(const std::weak_ptr<GDUnixSocketServerDelegate> &delegate)
{
    const std::lock_guard lock(delegateMutex);
    weakDelegate = delegate;
}

std::shared_ptr<GDUnixSocketServerDelegate> GDUnixSocketServer::delegate() const
{
    const std::lock_guard lock(delegateMutex);
    return weakDelegate.lock();
}

bool GDUnixSocketServer::listenWithMaxConnections(int maximum, QBError *error)
{
    constexpr int usualBacklog = 5;
    handOver(error, {});
    platform::FileDescriptor opened = SystemSocket::open();
    if (!opened.isOpen()) {
        handOver(error, gduds_errorForCode(BadSocket, lastErrorInfoForSocket(-1)));
        return false;
    }
    const Descriptor listening = adopt(std::move(opened));
    turnAwayClients(false);
    if (!bindAndListen(listening, maximum == 0 ? usualBacklog : maximum, error))
        return false;
    setState(listening, State::Listening);
    if (const auto listener = delegate())
        listener->unixSocketServerDidStartListening(*this);
    mainLoop();
    return true;
}

bool GDUnixSocketServer::bindAndListen(const Descriptor &listening, int backlog, QBError *error)
{
    const auto refuse = [&](int code, const QString &info) {
        handOver(error, gduds_errorForCode(code, info));
        closeIfCurrent(listening);
        return false;
    };
    const auto fail = [&](int code) {
        handOver(error, gduds_errorForCode(code, lastErrorInfoForSocket(listening->number())));
        closeSilently();
        return false;
    };
    const auto address = SystemSocket::address(socketPath());
    if (!address)
        return refuse(Listen, QStringLiteral("The socket path is inconsistent"));
    if (isFolderOpenToOthers(socketPath()))
        return refuse(Bind, QStringLiteral("The folder of the socket is open to other users"));
    const SocketDescriptor::Use use(listening);
    const auto *const record = reinterpret_cast<const sockaddr *>(&*address);
    if (::bind(use.number(), record, SystemSocket::addressLength) != 0)
        return fail(Bind);
    if (::listen(use.number(), backlog) != 0)
        return fail(Listen);
    return true;
}

void GDUnixSocketServer::mainLoop()
{
    const Descriptor listening = descriptor();
    if (!listening)
        return;
    const std::weak_ptr<GDUnixSocketServer> weak = std::static_pointer_cast<GDUnixSocketServer>(shared_from_this());
    const bool started = startLoopThread([weak, listening] {
        std::this_thread::sleep_for(std::chrono::milliseconds(1)); // whoever listens finishes its set-up first
        const SocketDescriptor::Use use(listening);
        for (;;) {
            platform::FileDescriptor accepted = SystemSocket::accept(use.number());
            const int errorNumber = errno;
            const auto self = weak.lock();
            if (!self || use.isClosed())
                return;
            if (!accepted.isOpen())
                return self->failToAccept(listening, errorNumber);
            self->welcome(std::move(accepted));
        }
    });
    if (!started)
        failToAccept(listening, EAGAIN);
}

void GDUnixSocketServer::welcome(platform::FileDescriptor accepted)
{
    if (SystemSocket::peerUser(accepted.get()) != servedUser) {
        platform::log(QStringLiteral("ERROR: GDUnixSocketServer welcome - refused a client of another user"));
        return;
    }
    const auto client = GDUnixSocket::initWithDescriptor(std::move(accepted), fragmentSize());
    if (!addClient(client))
        return client->close();
    // The delegate hears of the client before it hears from it.
    if (const auto listener = delegate())
        listener->didAcceptClientWithID(*this, client->uniqueID());
    readOnConnection(client);
}

void GDUnixSocketServer::failToAccept(const Descriptor &listening, int errorNumber)
{
    {
        const std::lock_guard lock(closeLock);
        if (descriptor() != listening)
            return;
        if (const auto listener = delegate())
            listener->unixSocketServerDidFailToAcceptConnection(
                *this, gduds_errorForCode(Accept, systemErrorInfo(listening->number(), errorNumber)));
    }
    close();
}

void GDUnixSocketServer::readOnConnection(const std::shared_ptr<GDUnixSocket> &client)
{
    const std::weak_ptr<GDUnixSocketServer> weak = std::static_pointer_cast<GDUnixSocketServer>(shared_from_this());
    const bool started = startLoopThread([weak, client] {
        for (;;) {
            QBError failure;
            const auto data = client->readWithError(&failure);
            const auto self = weak.lock();
            if (!self || !self->clientExists(client))
                return;
            self->didReadFromClient(client, data, failure);
            if (!data)
                return;
        }
    });
    if (!started)
        removeAndCloseClient(client);
}

void GDUnixSocketServer::didReadFromClient(const std::shared_ptr<GDUnixSocket> &client,
                                           const std::optional<QByteArray> &data, const QBError &error)
{
    const auto listener = delegate();
    if (data) {
        if (listener)
            listener->didReceiveData(*this, *data, client->uniqueID());
        return;
    }
    if (listener && error)
        listener->didFailToReadForClientID(*this, client->uniqueID(), error);
    else if (listener)
        listener->clientWithIDDidDisconnect(*this, client->uniqueID());
    removeAndCloseClient(client);
}

qint64 GDUnixSocketServer::sendData(const QByteArray &data, const QString &toClientWithID, QBError *error)
{
    // Written outside the table's lock: a client that does not read must not hold up the others.
    if (const auto client = clientWithID(toClientWithID))
        return client->writeData(data, error);
    handOver(error, gduds_errorForCode(UnknownClient, QStringLiteral("Client ID: %1").arg(toClientWithID)));
    return -1;
}

void GDUnixSocketServer::sendData(const QByteArray &data, const QString &toClientWithID, WriteCompletion completion)
{
    if (const auto client = clientWithID(toClientWithID))
        return client->writeData(data, std::move(completion));
    if (completion)
        platform::dispatchGlobal([toClientWithID, completion = std::move(completion)] {
            completion(gduds_errorForCode(UnknownClient, QStringLiteral("Client ID: %1").arg(toClientWithID)), -1);
        });
}

qint64 GDUnixSocketServer::writeData(const QByteArray &, QBError *error)
{
    handOver(error, {});
    return 0;
}

void GDUnixSocketServer::writeData(const QByteArray &, WriteCompletion completion)
{
    if (completion)
        platform::dispatchGlobal([completion = std::move(completion)] { completion({}, 0); });
}

bool GDUnixSocketServer::closeWithError(QBError *error, bool informDelegate)
{
    handOver(error, {});
    const std::lock_guard lock(closeLock);
    if (tellingOfClose)
        return state() == State::Closed;
    if (state() == State::Closed || fd() == -1)
        return closeDescriptor(error);
    turnAwayClients(true);
    removeAllClients();
    const QBError failure = unlinkSocket();
    if (failure)
        turnAwayClients(false);
    else
        closeDescriptor(nullptr);
    if (const auto listener = informDelegate ? delegate() : nullptr) {
        const QScopedValueRollback telling(tellingOfClose, true);
        listener->unixSocketServerDidClose(*this, failure);
    }
    handOver(error, failure);
    return !failure;
}

bool GDUnixSocketServer::addClient(const std::shared_ptr<GDUnixSocket> &client)
{
    if (!client)
        throw std::invalid_argument("Cannot add empty client");
    const std::lock_guard lock(clientsLock);
    if (turningAway || connectedClients.size() >= maximumClients)
        return false;
    connectedClients.insert(client->uniqueID(), client);
    return true;
}

bool GDUnixSocketServer::clientExists(const std::shared_ptr<GDUnixSocket> &client) const
{
    return client && clientIDExists(client->uniqueID());
}

bool GDUnixSocketServer::clientIDExists(const QString &clientID) const
{
    const std::lock_guard lock(clientsLock);
    return connectedClients.contains(clientID);
}

std::shared_ptr<GDUnixSocket> GDUnixSocketServer::clientWithID(const QString &clientID) const
{
    const std::lock_guard lock(clientsLock);
    return connectedClients.value(clientID);
}

void GDUnixSocketServer::removeAndCloseClient(const std::shared_ptr<GDUnixSocket> &client)
{
    if (!client)
        return;
    {
        const std::lock_guard lock(clientsLock);
        connectedClients.remove(client->uniqueID());
    }
    client->close();
}

void GDUnixSocketServer::removeAllClients()
{
    const std::lock_guard lock(clientsLock);
    for (const auto &client : std::as_const(connectedClients))
        client->close();
    connectedClients.clear();
}

void GDUnixSocketServer::turnAwayClients(bool turnAway)
{
    const std::lock_guard lock(clientsLock);
    turningAway = turnAway;
}

QBError GDUnixSocketServer::unlinkSocket() const
{
    const QByteArray file = QFile::encodeName(socketPath());
    struct stat status;
    if (::stat(file.constData(), &status) != 0 || !S_ISSOCK(status.st_mode) || ::unlink(file.constData()) == 0)
        return {};
    return gduds_errorForCode(Unlink, lastErrorInfo());
}
