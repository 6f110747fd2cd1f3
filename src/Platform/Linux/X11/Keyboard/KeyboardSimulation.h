#pragma once

#include "Base/CustomDelete.h"

#include <cstdint>
#include <memory>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

/// What stays after the keys are up again.
struct KeyboardLocks
{
    uint8_t modifiers = 0; ///< X modifiers
    xkb_layout_index_t layout = 0;

    friend bool operator==(const KeyboardLocks &, const KeyboardLocks &) = default;
};

/// Tries on a copy of a keyboard's state what its keys do to modifiers, locks and layout. Symbols
/// do not tell: one key may be Shift alone and Caps Lock beside the other Shift.
class KeyboardSimulation
{
public:
    /// No key is down at first. The keymap must outlive the simulation.
    KeyboardSimulation(xkb_keymap *keymap, const KeyboardLocks &locks);

    void press(uint8_t keycode);
    void release(uint8_t keycode);

    /// The X modifiers that keys hold now.
    [[nodiscard]] uint8_t heldModifiers() const;
    /// The layout in which this key works; it may have fewer of them than others.
    [[nodiscard]] xkb_layout_index_t layoutOf(uint8_t keycode) const;
    /// What was there at first is unchanged, and nothing waits for the next key.
    [[nodiscard]] bool isUndisturbed() const;
    /// Keys hold modifiers, or another layout.
    [[nodiscard]] bool holdsAny() const;

private:
    [[nodiscard]] uint8_t serialized(xkb_state_component component) const;
    [[nodiscard]] KeyboardLocks locks() const;

    std::unique_ptr<xkb_state, CustomDelete<xkb_state_unref>> m_state;
    KeyboardLocks m_initialLocks;
};

} // namespace Velloro
