#pragma once

#include <cstdint>

class QDBusMessage;

namespace Velloro {

/// The set of states that an object on the accessibility bus reports, as far as they matter
/// here: the first of its two words of bits.
class AtSpiStates
{
public:
    /// The states that matter here, with their numbers on the bus.
    enum State : uint32_t {
        active = 1,
        editable = 7,
        focused = 12,
        multiLine = 17,
        showing = 25,
        singleLine = 26,
        managesDescendants = 31,
    };

    AtSpiStates() = default;
    explicit AtSpiStates(uint32_t low)
        : m_low(low)
    {
    }

    /// The states in a reply to GetState; none in any other message.
    [[nodiscard]] static AtSpiStates of(const QDBusMessage &reply);

    [[nodiscard]] bool contains(State state) const { return (m_low >> state & 1U) != 0; }

private:
    uint32_t m_low = 0;
};

} // namespace Velloro
