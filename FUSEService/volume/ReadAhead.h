#pragma once

#include <QtGlobal>

#include <mutex>

namespace volume
{

/// Decides for one open file which blocks to fetch before they are asked for: none for scattered reads, more the longer
/// somebody reads on. Any thread.
class ReadAhead
{
public:
    struct Blocks {
        qint64 first = 0;
        qint64 count = 0;
    };
    static constexpr qint64 mostBlocks = 8;

    /// Notes a read and tells the blocks behind it to fetch now. Each block is told once while somebody reads on,
    /// several at a time, so that few calls bring them.
    Blocks advance(qint64 offset, qint64 length, qint64 fileSize);

private:
    std::mutex mutex;
    qint64 expected = 0; ///< where a reader that goes on comes next
    qint64 window = 0;
    qint64 lastBlock = -1;
    qint64 planned = 0; ///< the block behind those told already
};

} // namespace volume
