#pragma once

#include <QByteArray>

namespace documentserver
{

/// A body of known length that is put together while it is sent: some bytes, a range of a file, some bytes.
class ReplyStream
{
public:
    /// Bytes only.
    explicit ReplyStream(QByteArray bytes) : head(std::move(bytes)) {}
    /// Takes over the descriptor; -1 goes with length 0. `offset` and `length` must lie inside the file.
    ReplyStream(QByteArray before, int descriptor, qint64 offset, qint64 length, QByteArray after);
    ~ReplyStream();
    ReplyStream(const ReplyStream &) = delete;
    ReplyStream &operator=(const ReplyStream &) = delete;

    qint64 size() const { return head.size() + fileLength + tail.size(); }
    /// Reads up to `most` bytes from `position`; their count, or -1 where there are none or the file fails.
    qint64 read(qint64 position, char *into, qint64 most) const;

private:
    QByteArray head;
    int file = -1;
    qint64 fileOffset = 0;
    qint64 fileLength = 0;
    QByteArray tail;
};

} // namespace documentserver
