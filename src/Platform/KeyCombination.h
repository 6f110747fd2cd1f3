#pragma once

#include "Platform/ModifierKeys.h"

#include <cstdint>

namespace Velloro {

/// A key with modifiers, as hotkeys are registered and stored.
struct KeyCombination
{
    /// A virtual key code: a position on the keyboard, independent of its layout; 49 is Space.
    uint32_t keyCode = 0;
    /// Bits of `ClassicMask`.
    uint32_t modifiers = 0;

    friend bool operator==(const KeyCombination &, const KeyCombination &) = default;
};

} // namespace Velloro
