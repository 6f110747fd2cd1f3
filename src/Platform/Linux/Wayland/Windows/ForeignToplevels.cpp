#include "Platform/Linux/Wayland/Windows/ForeignToplevels.h"

#include "Platform/Linux/Wayland/IgnoredEvent.h"

#include <algorithm>
#include <foreign-toplevel-client.h>
#include <span>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr uint32_t newestVersion = 3;
constexpr auto patience = 100ms;

using Handle = zwlr_foreign_toplevel_handle_v1;
using Manager = zwlr_foreign_toplevel_manager_v1;

} // namespace

std::shared_ptr<ForeignToplevels>
ForeignToplevels::make(std::shared_ptr<WaylandConnection> connection)
{
    auto *manager
        = connection->bind<Manager>(zwlr_foreign_toplevel_manager_v1_interface, newestVersion);
    if (!manager)
        return nullptr;
    return std::shared_ptr<ForeignToplevels>(new ForeignToplevels(std::move(connection), manager));
}

ForeignToplevels::ForeignToplevels(std::shared_ptr<WaylandConnection> connection, Manager *manager)
    : m_connection(std::move(connection))
    , m_manager(manager, {zwlr_foreign_toplevel_manager_v1_destroy})
{
    static constexpr zwlr_foreign_toplevel_manager_v1_listener listener{
        .toplevel = [](void *data, Manager *,
                       Handle *handle) { static_cast<ForeignToplevels *>(data)->add(handle); },
        .finished
        = [](void *data, Manager *) { static_cast<ForeignToplevels *>(data)->m_manager.reset(); },
    };
    zwlr_foreign_toplevel_manager_v1_add_listener(manager, &listener, this);
}

void ForeignToplevels::add(Handle *handle)
{
    static constexpr zwlr_foreign_toplevel_handle_v1_listener listener{
        .title = ignoredEvent,
        .app_id =
            [](void *data, Handle *handle, const char *id) {
                static_cast<ForeignToplevels *>(data)->find(handle).comingId
                    = QString::fromUtf8(id);
            },
        .output_enter = ignoredEvent,
        .output_leave = ignoredEvent,
        .state =
            [](void *data, Handle *handle, wl_array *states) {
                const std::span all(static_cast<const uint32_t *>(states->data),
                                    states->size / sizeof(uint32_t));
                static_cast<ForeignToplevels *>(data)->find(handle).isComingActive
                    = std::ranges::find(all,
                                        uint32_t(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED))
                    != all.end();
            },
        .done =
            [](void *data, Handle *handle) {
                Toplevel &toplevel = static_cast<ForeignToplevels *>(data)->find(handle);
                toplevel.window.windowClass.name = toplevel.comingId;
                toplevel.isActive = toplevel.isComingActive;
            },
        .closed =
            [](void *data, Handle *handle) {
                static_cast<ForeignToplevels *>(data)->m_toplevels.remove_if(
                    [=](const Toplevel &each) { return each.handle.get() == handle; });
            },
        .parent = ignoredEvent,
    };
    m_toplevels.push_back({.handle = {handle, {zwlr_foreign_toplevel_handle_v1_destroy}},
                           .window = {.number = ++m_count, .windowClass = {}, .process = {}},
                           .comingId = {}});
    zwlr_foreign_toplevel_handle_v1_add_listener(handle, &listener, this);
}

ForeignToplevels::Toplevel &ForeignToplevels::find(const Handle *handle)
{
    return *std::ranges::find_if(m_toplevels,
                                 [=](const Toplevel &each) { return each.handle.get() == handle; });
}

std::optional<WindowList::Window> ForeignToplevels::activeWindow()
{
    m_connection->roundtrip(QDeadlineTimer(patience));
    const auto active = std::ranges::find_if(m_toplevels, &Toplevel::isActive);
    return active == m_toplevels.end() ? std::nullopt : std::optional(active->window);
}

} // namespace Velloro
