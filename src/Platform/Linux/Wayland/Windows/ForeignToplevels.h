#pragma once

#include "Platform/Linux/Wayland/Windows/WindowList.h"

#include <list>

struct zwlr_foreign_toplevel_handle_v1;
struct zwlr_foreign_toplevel_manager_v1;

namespace Velloro {

/// The windows of a compositor of the wlroots kind. It does not tell of processes.
class ForeignToplevels final : public WindowList
{
public:
    /// Null where the compositor does not tell of them.
    [[nodiscard]] static std::shared_ptr<ForeignToplevels>
    make(std::shared_ptr<WaylandConnection> connection);

    [[nodiscard]] bool isAlive() const override { return m_manager && m_connection->isAlive(); }
    [[nodiscard]] std::optional<Window> activeWindow() override;

private:
    struct Toplevel
    {
        WaylandHandle<zwlr_foreign_toplevel_handle_v1> handle;
        Window window;
        bool isActive = false;
        /// What was told, until it is complete.
        QString comingId;
        bool isComingActive = false;
    };

    ForeignToplevels(std::shared_ptr<WaylandConnection> connection,
                     zwlr_foreign_toplevel_manager_v1 *manager);

    void add(zwlr_foreign_toplevel_handle_v1 *handle);
    [[nodiscard]] Toplevel &find(const zwlr_foreign_toplevel_handle_v1 *handle);

    std::shared_ptr<WaylandConnection> m_connection;
    WaylandHandle<zwlr_foreign_toplevel_manager_v1> m_manager;
    std::list<Toplevel> m_toplevels;
    uint64_t m_count = 0;
};

} // namespace Velloro
