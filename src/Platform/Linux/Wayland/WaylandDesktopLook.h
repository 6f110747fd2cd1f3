#pragma once

#include "Platform/Linux/Desktop/DesktopLook.h"

#include <memory>

namespace Velloro {

/// A desktop of a Wayland compositor, which blends all windows. A tray is there only on the session
/// bus, except for windows of the X server beside the compositor.
class WaylandDesktopLook final : public DesktopLook
{
    Q_OBJECT

public:
    /// `windows` is the look of the server that has the program's windows; null where that is the
    /// compositor itself.
    WaylandDesktopLook(std::unique_ptr<DesktopLook> windows, std::optional<bool> isBarDark)
        : m_windows(std::move(windows))
        , m_isBarDark(isBarDark)
    {
        if (m_windows)
            connect(m_windows.get(), &DesktopLook::changed, this, &DesktopLook::changed);
    }

    [[nodiscard]] bool isCompositing() const override { return true; }
    [[nodiscard]] bool scalesWindowsWithText() const override
    {
        return m_windows && m_windows->scalesWindowsWithText();
    }
    [[nodiscard]] bool hasTray() const override { return m_windows && m_windows->hasTray(); }
    [[nodiscard]] std::optional<bool> isTrayDark() const override
    {
        return m_windows ? m_windows->isTrayDark() : m_isBarDark;
    }

private:
    std::unique_ptr<DesktopLook> m_windows;
    std::optional<bool> m_isBarDark;
};

} // namespace Velloro
