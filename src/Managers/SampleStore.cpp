#include "Managers/SampleStore.h"

#include <algorithm>
#include <utility>

namespace Velloro {

SampleStore::SampleStore()
{
    m_blocks.reserve(64);
    m_blocks.push_back(makeBlock());
}

void SampleStore::append(std::span<const float> samples)
{
    while (!samples.empty()) {
        if (m_blocks.back().size() == blockSize) {
            if (m_spareBlock.capacity() < blockSize)
                m_spareBlock = makeBlock();
            m_blocks.push_back(std::exchange(m_spareBlock, {}));
        }
        auto &block = m_blocks.back();
        const auto part = samples.first(std::min(samples.size(), blockSize - block.size()));
        block.insert(block.end(), part.begin(), part.end());
        samples = samples.subspan(part.size());
    }
}

bool SampleStore::wantsSpareBlock() const
{
    return m_spareBlock.capacity() < blockSize && m_blocks.back().size() > blockSize / 2;
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
