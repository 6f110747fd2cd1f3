#pragma once

#include "Platform/Linux/Wayland/Windows/WindowList.h"

#include <list>

struct org_kde_plasma_window;
struct org_kde_plasma_window_management;

namespace Velloro {

/// The windows of KDE, X11 ones included, as it shows them to a program that its desktop file
/// names.
class PlasmaWindows final : public WindowList
{
public:
    /// Null where the compositor does not show them.
    [[nodiscard]] static std::shared_ptr<PlasmaWindows>
    make(std::shared_ptr<WaylandConnection> connection);

    [[nodiscard]] bool isAlive() const override { return m_connection->isAlive(); }
    [[nodiscard]] std::optional<Window> activeWindow() override;

private:
    struct PlasmaWindow
    {
        WaylandHandle<org_kde_plasma_window> handle;
        Window window;
        bool isActive = false;
    };

    PlasmaWindows(std::shared_ptr<WaylandConnection> connection,
                  org_kde_plasma_window_management *management);

    void add(org_kde_plasma_window *handle);
    [[nodiscard]] static PlasmaWindow &find(void *self, const org_kde_plasma_window *handle);

    std::shared_ptr<WaylandConnection> m_connection;
    WaylandHandle<org_kde_plasma_window_management> m_management;
    std::list<PlasmaWindow> m_windows;
    uint64_t m_count = 0;
};

} // namespace Velloro
