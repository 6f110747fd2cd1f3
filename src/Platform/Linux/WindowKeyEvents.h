#pragma once

#include "Platform/KeyEventMonitor.h"

#include <optional>

class QKeyEvent;

namespace Velloro {

/// The key events of this program's windows, taken from the toolkit before any window sees them.
///
/// While a monitor exists the keyboard is grabbed for the active window, so that combinations of
/// the window manager and the desktop come here as well.
class WindowKeyEvents final : public KeyEventMonitor
{
public:
    [[nodiscard]] std::unique_ptr<Monitor> addLocalMonitor(Handler handler) override;

    /// A press or release as the monitor tells of it; nothing for the release of a key that is no
    /// modifier, and for keys without a known position.
    [[nodiscard]] static std::optional<KeyEvent> keyEvent(const QKeyEvent &event);
};

} // namespace Velloro
