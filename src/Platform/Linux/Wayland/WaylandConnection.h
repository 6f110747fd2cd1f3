#pragma once

#include <QByteArray>
#include <QDeadlineTimer>
#include <QObject>
#include <QSocketNotifier>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>
#include <wayland-client.h>

namespace Velloro {

/// Ends an object of a protocol by the function that the protocol has for it: those are local to
/// each file, which a template's argument in a header must not be.
template <typename T>
struct WaylandDelete
{
    void (*destroy)(T *) = nullptr;
    void operator()(T *object) const { destroy(object); }
};

/// Owns an object of a protocol: `WaylandHandle<wl_seat>(seat, {wl_seat_destroy})`.
template <typename T>
using WaylandHandle = std::unique_ptr<T, WaylandDelete<T>>;

/// One connection to the Wayland compositor, beside the toolkit's own. Its events arrive on the
/// thread that opened it, at the listeners of the objects that were made with it.
///
/// When the compositor goes away, `ended` is emitted once; requests are without effect then. Every
/// object of the protocol has to be destroyed before the connection.
class WaylandConnection final : public QObject
{
    Q_OBJECT

public:
    /// What the compositor offers.
    struct Global
    {
        uint32_t name = 0;
        QByteArray interface;
        uint32_t version = 0;
    };

    /// Connects to the compositor of the environment, or to the socket of this name or path. Null
    /// where there is none, or it does not answer before the deadline.
    [[nodiscard]] static std::shared_ptr<WaylandConnection>
    open(const QDeadlineTimer &deadline = QDeadlineTimer(2000), const QByteArray &socket = {});
    ~WaylandConnection() override;

    [[nodiscard]] wl_display *display() const { return m_display.get(); }
    [[nodiscard]] bool isAlive() const { return !m_ended; }

    [[nodiscard]] const std::vector<Global> &globals() const { return m_globals; }
    [[nodiscard]] bool offers(const wl_interface &interface) const;
    /// Binds the first global of this interface, in no later version than `version`. Null where
    /// the compositor lacks it. The caller owns it.
    template <typename T>
    [[nodiscard]] T *bind(const wl_interface &interface, uint32_t version)
    {
        return static_cast<T *>(bindFirst(interface, version));
    }
    /// The same for a certain global.
    [[nodiscard]] void *bind(const Global &global, const wl_interface &interface, uint32_t version);
    /// The seat with the user's keyboard; null where there is none.
    [[nodiscard]] wl_seat *seat();

    /// Sends what is buffered.
    void flush();
    /// Hands every event that has arrived to its listener; waits for nothing.
    void dispatchPending();
    /// Dispatches events until `done` says so; false when the deadline came first.
    bool dispatchUntil(const std::function<bool()> &done, const QDeadlineTimer &deadline);
    /// Waits until the compositor has dealt with all requests; false when the deadline came first.
    bool roundtrip(const QDeadlineTimer &deadline);

Q_SIGNALS:
    void globalAdded(const Velloro::WaylandConnection::Global &global);
    void globalRemoved(uint32_t name);
    void ended();

private:
    explicit WaylandConnection(wl_display *display);

    [[nodiscard]] void *bindFirst(const wl_interface &interface, uint32_t version);
    void readEvents(int patience);
    void end();

    WaylandHandle<wl_display> m_display;
    WaylandHandle<wl_registry> m_registry;
    WaylandHandle<wl_seat> m_seat;
    std::vector<Global> m_globals;
    std::unique_ptr<QSocketNotifier> m_notifier;
    bool m_ended = false;
};

} // namespace Velloro
