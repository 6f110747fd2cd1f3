#pragma once

#include <cstddef>
#include <span>
#include <vector>

namespace Velloro {

/// A recording that grows in blocks of a minute: what has been appended is never moved, so an
/// append costs the same in the tenth minute as in the first. Not synchronised.
class SampleStore
{
public:
    /// Samples per block: a minute at 16 kHz.
    static constexpr size_t blockSize = 960'000;

    SampleStore();

    /// Adds the samples at the end.
    void append(std::span<const float> samples);

    /// True when a block will be needed within half a minute and none is waiting.
    [[nodiscard]] bool wantsSpareBlock() const;
    /// Leaves a block for later, so that `append` need not allocate it.
    void addSpareBlock(std::vector<float> block) { m_spareBlock = std::move(block); }
    /// An empty block for `addSpareBlock`.
    [[nodiscard]] static std::vector<float> makeBlock();

    /// Everything appended so far as one array; the store is of no use afterwards.
    [[nodiscard]] std::vector<float> take();

private:
    std::vector<std::vector<float>> m_blocks;
    std::vector<float> m_spareBlock;
};

} // namespace Velloro
