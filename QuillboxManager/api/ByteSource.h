#pragma once

#include <QByteArray>

/// The bytes of an upload, read while they are sent. Used from the thread that sends, one upload at a time.
class ByteSource
{
public:
    virtual ~ByteSource() = default;

    /// Bytes in all; stays the same while the source is in use.
    virtual qint64 size() const = 0;
    /// Puts up to `most` (at least 1) bytes from `offset` into `into` and says how many; any position may be asked for
    /// again. Nothing to give although `size` promised more, which ends the upload: 0 or less.
    virtual qint64 readAt(qint64 offset, char *into, qint64 most) = 0;
};

/// `length` bytes of an open file from its beginning, read without moving its position. Does not own the descriptor.
class FileSource : public ByteSource
{
public:
    FileSource(int openFile, qint64 byteCount) : descriptor(openFile), length(byteCount) {}

    qint64 size() const override { return length; }
    qint64 readAt(qint64 offset, char *into, qint64 most) override;

private:
    const int descriptor;
    const qint64 length;
};

/// Bytes in memory, shared with whoever gave them.
class MemorySource : public ByteSource
{
public:
    explicit MemorySource(const QByteArray &bytes) : contents(bytes) {}

    qint64 size() const override { return contents.size(); }
    qint64 readAt(qint64 offset, char *into, qint64 most) override;

private:
    const QByteArray contents;
};
