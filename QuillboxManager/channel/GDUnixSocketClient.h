#pragma once

#include "channel/GDUnixSocket.h"

#include <mutex>

class GDUnixSocketClient;

/// What a client tells. Every operation is optional and arrives on the thread that reads.
class GDUnixSocketClientDelegate
{
public:
    virtual ~GDUnixSocketClientDelegate() = default;
    virtual void didReceiveData(GDUnixSocketClient &unixSocketClient, const QByteArray &data);
    virtual void didFailToReadWithError(GDUnixSocketClient &unixSocketClient, const QBError &error);
};

/// The connecting end.
class GDUnixSocketClient : public GDUnixSocket
{
public:
    using ConnectCompletion = std::function<void(const QBError &error)>;

    static std::shared_ptr<GDUnixSocketClient> initWithSocketPath(const QString &path,
                                                                  std::size_t fragmentSize = defaultFragmentSize);

    /// Held weakly. It may be destroyed on a reading thread when that thread is the last to use it.
    void setDelegate(const std::weak_ptr<GDUnixSocketClientDelegate> &delegate);

    /// Blocks for at most five seconds, when the listener does not get round to accepting. With `autoRead` a thread
    /// reads and tells the delegate until the stream ends or fails, then closes.
    bool connectWithAutoRead(bool autoRead, QBError *error = nullptr);
    /// As above, on the background pool, where `completion` is called too; it may be null.
    void connectWithAutoRead(bool autoRead, ConnectCompletion completion);
    /// Would block without saying so: no completion is `ConnectCompletion()`.
    void connectWithAutoRead(bool autoRead, std::nullptr_t) = delete;
    /// Starts the reading thread that `autoRead` asks for.
    void readLoop();

protected:
    using GDUnixSocket::GDUnixSocket;
    void didRead(const std::optional<QByteArray> &data, const QBError &error) override;

private:
    std::shared_ptr<GDUnixSocketClientDelegate> delegate() const;

    mutable std::mutex delegateMutex;
    std::weak_ptr<GDUnixSocketClientDelegate> weakDelegate;
};
