#pragma once

#include <QDeadlineTimer>
#include <chrono>

namespace Velloro {

/// A key as a desktop tells of it that repeats presses while the key is held, or that loses
/// releases.
class HeldKey
{
public:
    enum class Press {
        first,
        /// No new press: the key is still held.
        repeated,
        /// A new press; the release of the one before was never told.
        afterLostRelease,
    };

    /// A press that follows the last one by less, without a release between them, is a repetition.
    explicit HeldKey(std::chrono::milliseconds repetition);

    [[nodiscard]] Press press();
    /// Whether it was held.
    bool release();
    [[nodiscard]] bool isHeld() const { return m_isHeld; }

private:
    std::chrono::milliseconds m_repetition;
    QDeadlineTimer m_repetitionEnd;
    bool m_isHeld = false;
};

} // namespace Velloro
