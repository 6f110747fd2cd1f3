#pragma once

#include "Platform/KeyEventMonitor.h"

#include <memory>
#include <optional>

class QKeyEvent;

namespace Velloro {

class X11Connection;
class X11Keymap;

/// The key events of this program's windows, taken from the toolkit before any window sees them.
///
/// While a monitor exists the keyboard is grabbed for the active window, so that combinations of
/// the window manager and the desktop come here as well.
class WindowKeyEvents final : public KeyEventMonitor
{
public:
    /// Without a connection nothing is known of modifiers other than those of `EventFlag`.
    explicit WindowKeyEvents(std::shared_ptr<X11Connection> connection = nullptr);
    ~WindowKeyEvents() override;

    [[nodiscard]] std::unique_ptr<Monitor> addLocalMonitor(Handler handler) override;

    /// A press or release as the monitor tells of it; nothing for the release of a key that is no
    /// modifier, and for keys without a known position.
    [[nodiscard]] static std::optional<KeyEvent> keyEvent(const QKeyEvent &event);

private:
    std::shared_ptr<X11Connection> m_connection;
    /// Shared with the monitors.
    std::shared_ptr<X11Keymap> m_keymap;
};

} // namespace Velloro
