#pragma once

#include <QtGlobal>

#include <memory>
#include <mutex>
#include <vector>

namespace volume
{

/// Bytes of a document: written once, then shared by readers.
class Block
{
public:
    explicit Block(qint64 size);

    char *data() { return bytes.get(); }
    const char *data() const { return bytes.get(); }
    qint64 size() const { return length; }

private:
    std::unique_ptr<char[]> bytes;
    qint64 length = 0;
};

using BlockPointer = std::shared_ptr<const Block>;

/// Makes blocks. Full ones that nobody uses any more are used again, for fresh memory costs the kernel as much time as
/// filling it. Any thread; blocks may outlive it.
class BlockMemory
{
public:
    /// Full blocks have `fullSize` bytes; `mostSpare` of them are kept while unused.
    BlockMemory(qint64 fullSize, std::size_t mostSpare);

    /// Its bytes are undefined.
    std::shared_ptr<Block> take(qint64 size);

private:
    struct Spare {
        std::mutex mutex;
        std::vector<std::unique_ptr<Block>> blocks;
    };

    const qint64 fullSize;
    const std::size_t mostSpare;
    const std::shared_ptr<Spare> spare;
};

} // namespace volume
