#include "Platform/Linux/X11/X11FocusWatch.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <cstring>

namespace Velloro {

X11FocusWatch::X11FocusWatch()
    : m_connection(X11Connection::open())
{
    if (!m_connection)
        return;
    m_activeWindow = m_connection->atom("_NET_ACTIVE_WINDOW");
    connect(m_connection.get(), &X11Connection::eventReceived, this, &X11FocusWatch::handleEvent);
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection->xcb(), m_connection->root(), XCB_CW_EVENT_MASK,
                                 &events);
    m_connection->flush();
}

X11FocusWatch::~X11FocusWatch() = default;

void X11FocusWatch::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & ~0x80) != XCB_PROPERTY_NOTIFY)
        return;
    const auto *change = reinterpret_cast<const xcb_property_notify_event_t *>(event);
    if (change->atom == m_activeWindow && !isOnWindow())
        Q_EMIT left();
}

bool X11FocusWatch::isOnWindow() const
{
    xcb_connection_t *xcb = m_connection->xcb();
    const XcbReply<xcb_get_property_reply_t> reply(xcb_get_property_reply(
        xcb, xcb_get_property(xcb, 0, m_connection->root(), m_activeWindow, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    xcb_window_t window = XCB_WINDOW_NONE;
    if (reply && xcb_get_property_value_length(reply.get()) == sizeof window)
        std::memcpy(&window, xcb_get_property_value(reply.get()), sizeof window);
    return window != XCB_WINDOW_NONE;
}

} // namespace Velloro
