#include "Managers/SampleStore.h"

#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

// A day's: the list of blocks grows on the audio thread.
constexpr size_t reservedBlocks = 24 * 60;

} // namespace

SampleStore::SampleStore()
{
    m_blocks.reserve(reservedBlocks);
    m_blocks.push_back(makeBlock());
    replenish();
}

void SampleStore::append(std::span<const float> samples)
{
    while (!samples.empty()) {
        if (m_blocks.back().size() == blockSize) {
            auto spare = m_spareBlocks.pop();
            m_blocks.push_back(spare ? std::move(*spare) : makeBlock());
        }
        auto &block = m_blocks.back();
        const auto part = samples.first(std::min(samples.size(), blockSize - block.size()));
        block.insert(block.end(), part.begin(), part.end());
        samples = samples.subspan(part.size());
    }
}

void SampleStore::replenish()
{
    if (!m_spareBlocks.isFull())
        m_spareBlocks.push(makeBlock());
}

size_t SampleStore::size() const
{
    return (m_blocks.size() - 1) * blockSize + m_blocks.back().size();
}

void SampleStore::copy(size_t first, size_t count, std::vector<float> &target) const
{
    while (count > 0) {
        const auto block = std::span(m_blocks[first / blockSize]).subspan(first % blockSize);
        const auto part = block.first(std::min(count, block.size()));
        target.insert(target.end(), part.begin(), part.end());
        first += part.size();
        count -= part.size();
    }
}

std::vector<float> SampleStore::makeBlock()
{
    std::vector<float> block;
    block.reserve(blockSize);
    return block;
}

std::vector<float> SampleStore::take()
{
    auto blocks = std::exchange(m_blocks, {});
    if (blocks.size() == 1)
        return std::move(blocks.front());

    std::vector<float> whole;
    whole.reserve(blocks.size() * blockSize);
    for (auto &block : blocks) {
        whole.insert(whole.end(), block.begin(), block.end());
        // `= {}` would keep the memory: the recording would be there twice.
        block = std::vector<float>();
    }
    return whole;
}

} // namespace Velloro
