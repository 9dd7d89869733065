#include "volume/BlockMemory.h"

namespace volume
{

Block::Block(qint64 size) : bytes(new char[static_cast<std::size_t>(size)]), length(size) {}

BlockMemory::BlockMemory(qint64 sizeOfFullBlocks, std::size_t mostSpareBlocks)
    : fullSize(sizeOfFullBlocks), mostSpare(mostSpareBlocks), spare(std::make_shared<Spare>())
{
}

std::shared_ptr<Block> BlockMemory::take(qint64 size)
{
    if (size != fullSize)
        return std::make_shared<Block>(size);
    std::unique_ptr<Block> block;
    {
        const std::lock_guard lock(spare->mutex);
        if (!spare->blocks.empty()) {
            block = std::move(spare->blocks.back());
            spare->blocks.pop_back();
        }
    }
    if (!block)
        block = std::make_unique<Block>(size);
    const auto giveBack = [kept = spare, most = mostSpare](Block *unused) {
        std::unique_ptr<Block> returned(unused);
        const std::lock_guard lock(kept->mutex);
        if (kept->blocks.size() < most)
            kept->blocks.push_back(std::move(returned));
    };
    return {block.release(), giveBack};
}

} // namespace volume
