#pragma once

#include <cstdint>

class QDBusMessage;

namespace Velloro {

/// The set of states that an object on the accessibility bus reports.
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
        readOnly = 43,
    };

    AtSpiStates() = default;
    explicit AtSpiStates(uint64_t bits)
        : m_bits(bits)
    {
    }

    /// The states in a reply to GetState; none in any other message.
    [[nodiscard]] static AtSpiStates of(const QDBusMessage &reply);

    /// Whether the text can be written to. Some toolkits call a field editable although it is
    /// read-only just now.
    [[nodiscard]] bool isWritable() const { return contains(editable) && !contains(readOnly); }

    [[nodiscard]] bool contains(State state) const { return (m_bits >> state & 1U) != 0; }

private:
    uint64_t m_bits = 0;
};

} // namespace Velloro
