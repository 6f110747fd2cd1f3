#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <QAbstractEventDispatcher>
#include <algorithm>
#include <cerrno>
#include <poll.h>

namespace Velloro {

std::shared_ptr<WaylandConnection> WaylandConnection::open(const QDeadlineTimer &deadline,
                                                           const QByteArray &socket)
{
    wl_display *display = wl_display_connect(socket.isEmpty() ? nullptr : socket.constData());
    if (!display)
        return nullptr;
    std::shared_ptr<WaylandConnection> opened(new WaylandConnection(display));
    return opened->roundtrip(deadline) ? opened : nullptr;
}

WaylandConnection::WaylandConnection(wl_display *display)
    : m_display(display, {wl_display_disconnect})
    , m_registry(wl_display_get_registry(display), {wl_registry_destroy})
{
    static constexpr wl_registry_listener listener{
        .global =
            [](void *data, wl_registry *, uint32_t name, const char *interface, uint32_t version) {
                auto *self = static_cast<WaylandConnection *>(data);
                self->m_globals.push_back({name, interface, version});
                Q_EMIT self->globalAdded(self->m_globals.back());
            },
        .global_remove =
            [](void *data, wl_registry *, uint32_t name) {
                auto *self = static_cast<WaylandConnection *>(data);
                std::erase_if(self->m_globals,
                              [=](const Global &global) { return global.name == name; });
                Q_EMIT self->globalRemoved(name);
            },
    };
    wl_registry_add_listener(m_registry.get(), &listener, this);

    // The first connection is made before there is an application object, and only to look.
    auto *dispatcher = QAbstractEventDispatcher::instance();
    if (!dispatcher)
        return;
    m_notifier
        = std::make_unique<QSocketNotifier>(wl_display_get_fd(display), QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this,
            &WaylandConnection::dispatchPending);
    // Waiting for an answer may have read other events, too; the socket has nothing more to say.
    connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this,
            &WaylandConnection::dispatchPending);
}

WaylandConnection::~WaylandConnection() = default;

bool WaylandConnection::offers(const wl_interface &interface) const
{
    return std::ranges::any_of(
        m_globals, [&](const Global &global) { return global.interface == interface.name; });
}

void *WaylandConnection::bind(const Global &global, const wl_interface &interface, uint32_t version)
{
    return wl_registry_bind(m_registry.get(), global.name, &interface,
                            std::min(version, global.version));
}

void *WaylandConnection::bindFirst(const wl_interface &interface, uint32_t version)
{
    const auto global = std::ranges::find_if(
        m_globals, [&](const Global &offered) { return offered.interface == interface.name; });
    return global == m_globals.end() ? nullptr : bind(*global, interface, version);
}

wl_seat *WaylandConnection::seat()
{
    if (!m_seat)
        m_seat = {bind<wl_seat>(wl_seat_interface, 1), {wl_seat_destroy}};
    return m_seat.get();
}

void WaylandConnection::flush()
{
    // Where the compositor reads too slowly, the rest goes with the next flush.
    if (wl_display_flush(display()) < 0 && errno != EAGAIN)
        end();
}

void WaylandConnection::dispatchPending()
{
    readEvents(0);
}

bool WaylandConnection::dispatchUntil(const std::function<bool()> &done,
                                      const QDeadlineTimer &deadline)
{
    readEvents(0);
    while (!done()) {
        if (m_ended || deadline.hasExpired())
            return false;
        readEvents(static_cast<int>(deadline.remainingTime()));
    }
    return true;
}

bool WaylandConnection::roundtrip(const QDeadlineTimer &deadline)
{
    bool isDone = false;
    static constexpr wl_callback_listener listener{
        .done = [](void *data, wl_callback *, uint32_t) { *static_cast<bool *>(data) = true; },
    };
    const WaylandHandle<wl_callback> callback(wl_display_sync(display()), {wl_callback_destroy});
    wl_callback_add_listener(callback.get(), &listener, &isDone);
    return dispatchUntil([&] { return isDone; }, deadline);
}

/// Waits for events for so many milliseconds at most, without end when negative.
void WaylandConnection::readEvents(int patience)
{
    if (m_ended)
        return;
    while (wl_display_prepare_read(display()) != 0) {
        // Events were waiting: dealing with them is what the caller waits for.
        patience = 0;
        if (wl_display_dispatch_pending(display()) < 0) {
            end();
            return;
        }
    }
    flush();
    pollfd waiting{wl_display_get_fd(display()), POLLIN, 0};
    if (m_ended || poll(&waiting, 1, patience) <= 0)
        wl_display_cancel_read(display());
    else if (wl_display_read_events(display()) < 0)
        end();
    if (!m_ended && wl_display_dispatch_pending(display()) < 0)
        end();
    // The listeners may have had something to send.
    if (!m_ended)
        flush();
}

void WaylandConnection::end()
{
    if (m_ended)
        return;
    m_ended = true;
    if (m_notifier)
        m_notifier->setEnabled(false);
    Q_EMIT ended();
}

} // namespace Velloro
