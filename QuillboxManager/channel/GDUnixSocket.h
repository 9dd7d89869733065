#pragma once

#include "channel/GDUnixSocketErrors.h"
#include "channel/SocketDescriptor.h"
#include "platform/FileDescriptor.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

class WriteQueue;

/// One end of a local stream socket: the base of GDUnixSocketServer and GDUnixSocketClient, and by itself one accepted
/// connection. There is no framing: a read returns whatever is there, at most `fragmentSize` bytes of it.
/// Held by shared pointers; every operation from any thread. Closing or destroying the object ends blocked calls.
class GDUnixSocket : public std::enable_shared_from_this<GDUnixSocket>
{
public:
    enum class State { NotConnected = 0, Connected = 1, Closed = 2, Listening = 3 };
    using ReadCompletion = std::function<void(const QBError &error, const std::optional<QByteArray> &data)>;
    using WriteCompletion = std::function<void(const QBError &error, qint64 count)>;

    static constexpr std::size_t defaultFragmentSize = 256;

    /// Null when the path cannot be a socket's path (see `isSocketPath`).
    static std::shared_ptr<GDUnixSocket> initWithSocketPath(const QString &path,
                                                            std::size_t fragmentSize = defaultFragmentSize);
    /// Always null: there is no socket without a path.
    static std::shared_ptr<GDUnixSocket> init() { return initWithSocketPath({}); }
    /// A connection that a server accepted; it has no path of its own.
    static std::shared_ptr<GDUnixSocket> initWithDescriptor(platform::FileDescriptor accepted,
                                                            std::size_t fragmentSize);

    virtual ~GDUnixSocket();
    GDUnixSocket(const GDUnixSocket &) = delete;
    GDUnixSocket &operator=(const GDUnixSocket &) = delete;

    /// Non-empty, shorter than 104 bytes, and either "(dummy)" or in standardized form with a slash in it.
    static bool isSocketPath(const QString &path);

    int fd() const; ///< -1 when no socket is open
    /// Made when first asked for, then fixed.
    QString uniqueID() const;
    QString socketPath() const { return path; }
    State state() const;
    std::size_t fragmentSize() const { return fragment; }

    /// Blocks until there is something to read. Nothing with an error: the read failed; without: the stream has ended.
    std::optional<QByteArray> readWithError(QBError *error = nullptr);
    /// As above, on the background pool, where `completion` is called too.
    void readWithCompletion(ReadCompletion completion);

    /// One write of the whole data. The count written, 0 for no data, -1 with an error. Blocks while the peer reads too
    /// slowly.
    virtual qint64 writeData(const QByteArray &data, QBError *error = nullptr);
    /// As above on the background pool, in the order of the calls. `completion` may be null.
    virtual void writeData(const QByteArray &data, WriteCompletion completion);
    /// Would block without saying so: no completion is `WriteCompletion()`.
    void writeData(const QByteArray &data, std::nullptr_t) = delete;

    void close() { closeWithError(nullptr); }
    /// True also when it was closed before. False with an error when there was nothing to close or closing failed.
    virtual bool closeWithError(QBError *error);

    /// Error when no socket is open.
    QBError checkForBadSocket() const { return checkForBadSocket(fd()); }
    static QBError checkForBadSocket(int socket);
    /// "fd: %d. errno: %d. %s" of the system call that the calling thread has just seen fail.
    QString lastErrorInfo() const { return lastErrorInfoForSocket(fd()); }
    static QString lastErrorInfoForSocket(int socket);

protected:
    GDUnixSocket(const QString &socketPath, std::size_t fragmentSize);

    using Descriptor = std::shared_ptr<SocketDescriptor>;

    /// Makes `opened` this object's socket, not connected yet; an earlier one is closed.
    Descriptor adopt(platform::FileDescriptor opened);
    Descriptor descriptor() const;
    /// False when another thread has closed or replaced the socket meanwhile.
    bool setState(const Descriptor &of, State state);
    bool closeDescriptor(QBError *error);
    /// Closes only when `expected` is still this object's socket: a loop must not close what replaced its own.
    void closeIfCurrent(const Descriptor &expected);

    static std::optional<QByteArray> readFromSocket(int socket, std::size_t fragmentSize, QBError *error);
    static qint64 write(const QByteArray &data, const Descriptor &toSocket, QBError *error);

    /// Called after every read through this object, on the reading thread.
    virtual void didRead(const std::optional<QByteArray> &data, const QBError &error);

private:
    const QString path;
    const std::size_t fragment;
    const std::shared_ptr<WriteQueue> writes;
    mutable std::mutex mutex;
    mutable QString identifier;
    Descriptor current;
    State currentState = State::NotConnected;
};
