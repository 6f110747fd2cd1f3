#pragma once

#include "Platform/Linux/X11/Clipboard/SelectionContent.h"
#include "Platform/Linux/X11/X11Connection.h"

#include <memory>

namespace Velloro {

/// The window in whose name selections are owned and read: its properties receive what other
/// programs send, and the X server's clock.
///
/// One thread only, the connection's. It lives as long as selections are used at all, so that the
/// late answer of a slow program finds it.
class SelectionWindow
{
public:
    explicit SelectionWindow(std::shared_ptr<X11Connection> connection);
    ~SelectionWindow();
    SelectionWindow(const SelectionWindow &) = delete;
    SelectionWindow &operator=(const SelectionWindow &) = delete;

    [[nodiscard]] xcb_window_t id() const { return m_id; }

    /// The X server's clock; asks the server, with all events that came before dispatched.
    [[nodiscard]] xcb_timestamp_t serverTime();
    /// The name of a property that no conversion that may still be answered uses.
    [[nodiscard]] xcb_atom_t unusedProperty();
    /// Reads and deletes a property; without a type where there is none.
    [[nodiscard]] SelectionContent::Form takeProperty(xcb_atom_t name);

    /// Asks for an event at each change of the selection's owner, whoever it is.
    void watchOwner(xcb_atom_t selection);
    /// Code of that event; 0 where the server lacks the extension.
    [[nodiscard]] uint8_t ownerEvent() const { return m_ownerEvent; }

    void handleEvent(const xcb_generic_event_t *event);

private:
    std::shared_ptr<X11Connection> m_connection;
    xcb_window_t m_id = XCB_WINDOW_NONE;
    xcb_atom_t m_clock = XCB_ATOM_NONE;
    xcb_timestamp_t m_serverTime = XCB_CURRENT_TIME;
    bool m_serverTimeArrived = false;
    uint8_t m_ownerEvent = 0;
    unsigned m_properties = 0;
};

} // namespace Velloro
