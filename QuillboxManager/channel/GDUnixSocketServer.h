#pragma once

#include "channel/GDUnixSocket.h"

#include <QHash>

#include <mutex>
#include <sys/types.h>

class GDUnixSocketServer;

/// What a server tells. Every operation is optional and arrives on the thread that accepts, reads or closes.
class GDUnixSocketServerDelegate
{
public:
    virtual ~GDUnixSocketServerDelegate() = default;
    virtual void unixSocketServerDidStartListening(GDUnixSocketServer &unixSocketServer);
    virtual void didAcceptClientWithID(GDUnixSocketServer &unixSocketServer, const QString &clientID);
    virtual void didReceiveData(GDUnixSocketServer &unixSocketServer, const QByteArray &data, const QString &clientID);
    virtual void didFailToReadForClientID(GDUnixSocketServer &unixSocketServer, const QString &clientID,
                                          const QBError &error);
    virtual void clientWithIDDidDisconnect(GDUnixSocketServer &unixSocketServer, const QString &clientID);
    virtual void unixSocketServerDidFailToAcceptConnection(GDUnixSocketServer &unixSocketServer, const QBError &error);
    /// `error` tells that the socket file could not be removed; the server goes on listening then.
    virtual void unixSocketServerDidClose(GDUnixSocketServer &unixSocketServer, const QBError &error);
};

/// The listening end with its table of connected clients. Serves processes of one user only, at most `maximumClients`
/// at a time; others are turned away. The socket's folder must be closed to other users.
class GDUnixSocketServer : public GDUnixSocket
{
public:
    static constexpr qsizetype maximumClients = 128;

    static std::shared_ptr<GDUnixSocketServer> initWithSocketPath(const QString &path,
                                                                  std::size_t fragmentSize = defaultFragmentSize);
    /// As above, for clients that run as `servedUser` instead of this process's user.
    static std::shared_ptr<GDUnixSocketServer> initWithSocketPath(const QString &path, std::size_t fragmentSize,
                                                                  uid_t servedUser);
    ~GDUnixSocketServer() override;

    /// Held weakly. It may be destroyed on a background thread when that thread is the last to use it.
    void setDelegate(const std::weak_ptr<GDUnixSocketServerDelegate> &delegate);

    bool listenWithError(QBError *error = nullptr) { return listenWithMaxConnections(0, error); }
    /// `maximum` is the backlog of connections not yet accepted; 0 stands for 5.
    bool listenWithMaxConnections(int maximum, QBError *error = nullptr);

    /// As `writeData` of the client's connection; -1 with an error when there is no such client.
    qint64 sendData(const QByteArray &data, const QString &toClientWithID, QBError *error = nullptr);
    void sendData(const QByteArray &data, const QString &toClientWithID, WriteCompletion completion);
    void sendData(const QByteArray &data, const QString &toClientWithID, std::nullptr_t) = delete;

    /// A listening socket carries no data: writes nothing, 0, no error.
    qint64 writeData(const QByteArray &data, QBError *error = nullptr) override;
    void writeData(const QByteArray &data, WriteCompletion completion) override;

    /// Closes the clients, removes the socket file and, only when that worked, stops listening. The error is the one of
    /// the removal.
    bool closeWithError(QBError *error) override { return closeWithError(error, true); }
    bool closeWithError(QBError *error, bool informDelegate);
    void closeSilently() { closeWithError(nullptr, false); }

    /// False when the server has closed or its table is full. Throws std::invalid_argument for a null client.
    bool addClient(const std::shared_ptr<GDUnixSocket> &client);
    bool clientExists(const std::shared_ptr<GDUnixSocket> &client) const;
    bool clientIDExists(const QString &clientID) const;
    void removeAndCloseClient(const std::shared_ptr<GDUnixSocket> &client);
    void removeAllClients();

    /// Removes the file at the path if it is a socket. The error when that failed.
    QBError unlinkSocket() const;

private:
    GDUnixSocketServer(const QString &path, std::size_t fragmentSize, uid_t servedUser);

    std::shared_ptr<GDUnixSocketServerDelegate> delegate() const;
    bool bindAndListen(const Descriptor &listening, int backlog, QBError *error);
    void mainLoop();
    void welcome(platform::FileDescriptor accepted);
    void readOnConnection(const std::shared_ptr<GDUnixSocket> &client);
    void didReadFromClient(const std::shared_ptr<GDUnixSocket> &client, const std::optional<QByteArray> &data,
                           const QBError &error);
    void failToAccept(const Descriptor &listening, int errorNumber);
    void turnAwayClients(bool turnAway);
    std::shared_ptr<GDUnixSocket> clientWithID(const QString &clientID) const;

    const uid_t servedUser;
    std::recursive_mutex closeLock; ///< recursive: a delegate may close the server when told that it closes
    bool tellingOfClose = false;    ///< under closeLock: a delegate that closes again does not start another round
    mutable std::mutex clientsLock;
    QHash<QString, std::shared_ptr<GDUnixSocket>> connectedClients;
    bool turningAway = false;
    mutable std::mutex delegateMutex;
    std::weak_ptr<GDUnixSocketServerDelegate> weakDelegate;
};
