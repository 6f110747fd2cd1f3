#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <optional>
#include <utility>

namespace Velloro {

/// Hands values from one thread to one other, in order. Neither ever waits, and nothing is
/// allocated beyond what moving a `T` takes.
template <typename T, size_t capacity>
class HandOffQueue
{
public:
    /// The giving thread's. False when the queue is full; the value is still the caller's then.
    bool push(T &&value)
    {
        const size_t pushed = m_pushed.load(std::memory_order_relaxed);
        if (pushed - m_popped.load(std::memory_order_acquire) == capacity)
            return false;
        m_slots[pushed % capacity] = std::move(value);
        m_pushed.store(pushed + 1, std::memory_order_release);
        return true;
    }

    /// The giving thread's: whether `push` would fail.
    [[nodiscard]] bool isFull() const
    {
        return m_pushed.load(std::memory_order_relaxed) - m_popped.load(std::memory_order_acquire)
            == capacity;
    }

    /// The taking thread's. Empty when there is nothing.
    [[nodiscard]] std::optional<T> pop()
    {
        const size_t popped = m_popped.load(std::memory_order_relaxed);
        if (popped == m_pushed.load(std::memory_order_acquire))
            return {};
        std::optional<T> value(std::move(m_slots[popped % capacity]));
        m_popped.store(popped + 1, std::memory_order_release);
        return value;
    }

private:
    static_assert(std::atomic<size_t>::is_always_lock_free);

    std::array<T, capacity> m_slots{};
    // Since the beginning.
    std::atomic<size_t> m_pushed = 0;
    std::atomic<size_t> m_popped = 0;
};

} // namespace Velloro
