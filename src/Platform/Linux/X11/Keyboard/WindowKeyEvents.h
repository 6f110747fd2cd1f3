#pragma once

#include "Platform/KeyEventMonitor.h"

#include <functional>
#include <memory>
#include <optional>

class QKeyEvent;

namespace Velloro {

class X11Connection;

/// The key events of this program's windows, taken from the toolkit before any window sees them.
///
/// While a monitor exists the keyboard is grabbed for the active window, so that combinations of
/// the window manager and the desktop come here as well. A Wayland compositor allows no grab and is
/// asked in its own way.
class WindowKeyEvents final : public KeyEventMonitor
{
public:
    /// What differs between the display systems.
    struct Desktop
    {
        /// Whether a state of the modifiers, as events have it, contains one that is none of
        /// `EventFlag`.
        std::function<bool(uint32_t nativeModifiers)> holdsOtherModifier;
        /// Has the desktop give its own combinations to the windows while the result exists. Null,
        /// or no function, where it does not.
        std::function<std::shared_ptr<void>()> letShortcutsThrough;
        bool canGrab = false;
    };

    explicit WindowKeyEvents(Desktop desktop);
    /// On an X server. Without a connection nothing is known of modifiers other than those of
    /// `EventFlag`.
    explicit WindowKeyEvents(const std::shared_ptr<X11Connection> &connection = nullptr);
    ~WindowKeyEvents() override;

    [[nodiscard]] std::unique_ptr<Monitor> addLocalMonitor(Handler handler) override;

    /// A press or release as the monitor tells of it; nothing for the release of a key that is no
    /// modifier, and for keys without a known position.
    [[nodiscard]] static std::optional<KeyEvent> keyEvent(const QKeyEvent &event);

private:
    Desktop m_desktop;
};

} // namespace Velloro
