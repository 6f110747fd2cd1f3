#pragma once

namespace Velloro {

/// What the program can be asked to do with the hotkey of the one that is running.
enum class HotkeyVerb {
    press,
    release,
    /// One press, of which no release will be told.
    toggle,
};

} // namespace Velloro
