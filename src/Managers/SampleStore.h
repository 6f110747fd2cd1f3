#pragma once

#include "Base/HandOffQueue.h"

#include <cstddef>
#include <span>
#include <vector>

namespace Velloro {

/// A recording that grows in blocks of a minute: what has been appended is never moved, so an
/// append costs the same in the tenth minute as in the first.
///
/// Belongs to one thread, but for `replenish`.
class SampleStore
{
public:
    /// Samples per block: a minute at 16 kHz.
    static constexpr size_t blockSize = 960'000;

    SampleStore();

    /// Adds the samples at the end. Allocates only when `replenish` has not been called since the
    /// last block but one was full: for a minute at least.
    void append(std::span<const float> samples);

    /// Prepares the block that comes next, unless it is there already. One other thread may call it
    /// meanwhile.
    void replenish();

    /// How many samples have been appended.
    [[nodiscard]] size_t size() const;
    /// Adds `count` samples, beginning with sample `first`, to the end of `target`. All of them are
    /// there.
    void copy(size_t first, size_t count, std::vector<float> &target) const;

    /// Everything appended so far as one array; the store is of no use afterwards.
    [[nodiscard]] std::vector<float> take();

private:
    [[nodiscard]] static std::vector<float> makeBlock();

    // All but the last one are full.
    std::vector<std::vector<float>> m_blocks;
    HandOffQueue<std::vector<float>, 1> m_spareBlocks;
};

} // namespace Velloro
