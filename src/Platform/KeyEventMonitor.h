#pragma once

#include "Platform/ModifierKeys.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace Velloro {

/// A key that was pressed in a window of this program, or a change of the held modifiers.
struct KeyEvent
{
    enum class Type { keyDown, flagsChanged };

    Type type = Type::keyDown;
    /// Virtual key code: the position on the keyboard, whatever the layout.
    uint32_t keyCode = 0;
    /// The modifiers that are held, after a change of them: bits of `EventFlag`. Other bits may be
    /// set.
    uint32_t modifierFlags = 0;
    /// A modifier is held that is none of `EventFlag`, such as AltGr. Locks are not held.
    bool hasOtherModifier = false;

    friend bool operator==(const KeyEvent &, const KeyEvent &) = default;
};

/// The key events of this program's own windows, seen before the windows themselves get them: no
/// shortcut, no focus change and no input method comes first. Main thread only.
class KeyEventMonitor
{
public:
    /// Monitoring lasts as long as the token exists.
    class Monitor
    {
    public:
        virtual ~Monitor() = default;
        /// Combinations that the desktop would take come here, too.
        [[nodiscard]] virtual bool seesDesktopShortcuts() const { return true; }
    };

    /// Receives one event per physical press (none for auto-repeat) and per change of the
    /// modifiers; true swallows it. It must not destroy its own monitor.
    using Handler = std::function<bool(const KeyEvent &)>;

    virtual ~KeyEventMonitor() = default;

    /// While the monitor exists, combinations that the desktop would take come here too, where
    /// the system allows it; the monitor says whether it does.
    [[nodiscard]] virtual std::unique_ptr<Monitor> addLocalMonitor(Handler handler) = 0;
};

} // namespace Velloro
