#pragma once

#include "channel/GDUnixSocketClient.h"
#include "channel/GDUnixSocketServer.h"
#include "channel/SystemSocket.h"

#include <QDir>
#include <QStringList>
#include <QTemporaryDir>

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace testing
{

/// Collects what happens on other threads and waits for it.
class Events
{
public:
    void add(const QString &event, const QByteArray &data = {})
    {
        const std::lock_guard lock(mutex);
        list.append(event);
        received.append(data);
        if (!data.isEmpty())
            pieces.append(static_cast<int>(data.size()));
        changed.notify_all();
    }

    /// False when it does not come true within ten seconds.
    template <class Condition> bool waitFor(Condition condition)
    {
        std::unique_lock lock(mutex);
        return changed.wait_for(lock, std::chrono::seconds(10), [&] { return condition(*this); });
    }
    bool waitForEvent(const QString &event)
    {
        return waitFor([&](const Events &self) { return self.list.contains(event); });
    }
    bool waitForBytes(qsizetype count)
    {
        return waitFor([&](const Events &self) { return self.received.size() >= count; });
    }

    QStringList events()
    {
        const std::lock_guard lock(mutex);
        return list;
    }
    QByteArray bytes()
    {
        const std::lock_guard lock(mutex);
        return received;
    }
    QList<int> pieceSizes()
    {
        const std::lock_guard lock(mutex);
        return pieces;
    }

    QStringList list;
    QByteArray received;
    QList<int> pieces;

private:
    std::mutex mutex;
    std::condition_variable changed;
};

class ServerRecorder : public GDUnixSocketServerDelegate, public Events
{
public:
    void unixSocketServerDidStartListening(GDUnixSocketServer &) override { add(QStringLiteral("listening")); }
    void didAcceptClientWithID(GDUnixSocketServer &, const QString &clientID) override
    {
        {
            const std::lock_guard lock(idMutex);
            ids.append(clientID);
        }
        add(QStringLiteral("accepted"));
    }
    void didReceiveData(GDUnixSocketServer &, const QByteArray &data, const QString &clientID) override
    {
        add(lastID() == clientID ? QStringLiteral("data") : QStringLiteral("data of another"), data);
    }
    void didFailToReadForClientID(GDUnixSocketServer &, const QString &, const QBError &error) override
    {
        add(QStringLiteral("failed %1").arg(error.code()));
    }
    void clientWithIDDidDisconnect(GDUnixSocketServer &server, const QString &clientID) override
    {
        add(server.clientIDExists(clientID) ? QStringLiteral("disconnected") : QStringLiteral("gone too early"));
    }
    void unixSocketServerDidFailToAcceptConnection(GDUnixSocketServer &, const QBError &error) override
    {
        add(error.localizedDescription());
    }
    void unixSocketServerDidClose(GDUnixSocketServer &server, const QBError &error) override
    {
        add(QStringLiteral("closed %1").arg(error.code()));
        server.closeWithError(nullptr); // a delegate may; it must neither hang nor tell twice
    }
    QString lastID()
    {
        const std::lock_guard lock(idMutex);
        return ids.value(ids.size() - 1);
    }

private:
    std::mutex idMutex;
    QStringList ids;
};

class ClientRecorder : public GDUnixSocketClientDelegate, public Events
{
public:
    void didReceiveData(GDUnixSocketClient &, const QByteArray &data) override { add(QStringLiteral("data"), data); }
    void didFailToReadWithError(GDUnixSocketClient &, const QBError &error) override
    {
        add(QStringLiteral("failed %1").arg(error.code()));
    }
};

/// A listening server with its recorder in a folder of its own.
struct ListeningServer {
    explicit ListeningServer(std::size_t fragmentSize = GDUnixSocket::defaultFragmentSize)
        : server(GDUnixSocketServer::initWithSocketPath(path(), fragmentSize))
    {
        server->setDelegate(recorder);
        listening = server->listenWithError(&error);
    }
    ~ListeningServer()
    {
        // The socket file is gone before the folder goes, whichever thread is the last to hold the server.
        if (server)
            server->closeSilently();
    }
    QString path() const { return folder.filePath(QStringLiteral("socket")); }

    std::shared_ptr<GDUnixSocketClient> connected(bool autoRead = false) const
    {
        auto client = GDUnixSocketClient::initWithSocketPath(path());
        client->connectWithAutoRead(autoRead);
        return client;
    }

    QTemporaryDir folder;
    std::shared_ptr<ServerRecorder> recorder = std::make_shared<ServerRecorder>();
    std::shared_ptr<GDUnixSocketServer> server;
    QBError error;
    bool listening = false;
};

} // namespace testing
