#pragma once

#include <QByteArray>

#include <chrono>
#include <memory>

namespace testing
{

/// What a StreamServer does with every request.
struct StreamScript {
    /// Stops reading in the middle of a request's body after so many bytes; -1: takes all.
    qint64 readAtMost = -1;
    QByteArray head; ///< of the reply, to its blank line
    QByteArray before;
    qint64 zeros = 0; ///< bytes between `before` and `after`
    QByteArray after;
    std::chrono::milliseconds pause{0}; ///< after each `chunk` of the zeros
    qint64 chunk = 256 * 1024;
    /// Stops in the middle of the zeros, the connection stays open.
    bool stallHalfway = false;
};

/// An HTTP server on a loopback port for bodies of any size: those that arrive are counted and thrown away, those that
/// leave are made on the way, so that its memory stays small. One connection at a time, in a thread of its own.
class StreamServer
{
public:
    explicit StreamServer(const StreamScript &script);
    ~StreamServer();
    StreamServer(const StreamServer &) = delete;
    StreamServer &operator=(const StreamServer &) = delete;

    int port() const;
    /// Bytes of requests and of replies so far, heads included. Any thread.
    qint64 received() const;
    qint64 sent() const;
    /// Blocks until that many bytes came or left; false when they do not within ten seconds.
    bool waitForTraffic(qint64 bytes) const;

private:
    class Private;
    const std::unique_ptr<Private> d;
};

} // namespace testing
