#include "Platform/Linux/Wayland/Windows/PlasmaWindows.h"

#include "Platform/Linux/Wayland/IgnoredEvent.h"

#include <algorithm>
#include <plasma-window-management-client.h>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr uint32_t newestVersion = 16;
constexpr auto patience = 100ms;

using Handle = org_kde_plasma_window;
using Management = org_kde_plasma_window_management;

} // namespace

std::shared_ptr<PlasmaWindows> PlasmaWindows::make(std::shared_ptr<WaylandConnection> connection)
{
    auto *management
        = connection->bind<Management>(org_kde_plasma_window_management_interface, newestVersion);
    if (!management)
        return nullptr;
    std::shared_ptr<PlasmaWindows> made(new PlasmaWindows(std::move(connection), management));
    // Those before name windows by numbers that come again.
    return org_kde_plasma_window_management_get_version(management)
            < ORG_KDE_PLASMA_WINDOW_MANAGEMENT_WINDOW_WITH_UUID_SINCE_VERSION
        ? nullptr
        : made;
}

PlasmaWindows::PlasmaWindows(std::shared_ptr<WaylandConnection> connection, Management *management)
    : m_connection(std::move(connection))
    , m_management(management, {org_kde_plasma_window_management_destroy})
{
    static constexpr org_kde_plasma_window_management_listener listener{
        .show_desktop_changed = ignoredEvent,
        .window = ignoredEvent,
        .stacking_order_changed = ignoredEvent,
        .stacking_order_uuid_changed = ignoredEvent,
        .window_with_uuid =
            [](void *data, Management *management, uint32_t, const char *uuid) {
                static_cast<PlasmaWindows *>(data)->add(
                    org_kde_plasma_window_management_get_window_by_uuid(management, uuid));
            },
    };
    org_kde_plasma_window_management_add_listener(management, &listener, this);
}

void PlasmaWindows::add(Handle *handle)
{
    static constexpr org_kde_plasma_window_listener listener{
        .title_changed = ignoredEvent,
        .app_id_changed =
            [](void *data, Handle *handle, const char *id) {
                find(data, handle).window.windowClass.name = QString::fromUtf8(id);
            },
        .state_changed =
            [](void *data, Handle *handle, uint32_t states) {
                find(data, handle).isActive = states
                    & ORG_KDE_PLASMA_WINDOW_MANAGEMENT_STATE_ACTIVE;
            },
        .virtual_desktop_changed = ignoredEvent,
        .themed_icon_name_changed = ignoredEvent,
        .unmapped =
            [](void *data, Handle *handle) {
                static_cast<PlasmaWindows *>(data)->m_windows.remove_if(
                    [=](const PlasmaWindow &each) { return each.handle.get() == handle; });
            },
        .initial_state = ignoredEvent,
        .parent_window = ignoredEvent,
        .geometry = ignoredEvent,
        .icon_changed = ignoredEvent,
        .pid_changed =
            [](void *data, Handle *handle, uint32_t process) {
                if (process != 0)
                    find(data, handle).window.process = static_cast<pid_t>(process);
            },
        .virtual_desktop_entered = ignoredEvent,
        .virtual_desktop_left = ignoredEvent,
        .application_menu = ignoredEvent,
        .activity_entered = ignoredEvent,
        .activity_left = ignoredEvent,
        .resource_name_changed =
            [](void *data, Handle *handle, const char *name) {
                find(data, handle).window.windowClass.instance = QString::fromUtf8(name);
            },
    };
    m_windows.push_back({.handle = {handle, {org_kde_plasma_window_destroy}},
                         .window = {.number = ++m_count, .windowClass = {}, .process = {}}});
    org_kde_plasma_window_add_listener(handle, &listener, this);
}

PlasmaWindows::PlasmaWindow &PlasmaWindows::find(void *self, const Handle *handle)
{
    return *std::ranges::find_if(
        static_cast<PlasmaWindows *>(self)->m_windows,
        [=](const PlasmaWindow &each) { return each.handle.get() == handle; });
}

std::optional<WindowList::Window> PlasmaWindows::activeWindow()
{
    m_connection->roundtrip(QDeadlineTimer(patience));
    const auto active = std::ranges::find_if(m_windows, &PlasmaWindow::isActive);
    return active == m_windows.end() ? std::nullopt : std::optional(active->window);
}

} // namespace Velloro
