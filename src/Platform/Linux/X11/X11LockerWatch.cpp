#include "Platform/Linux/X11/X11LockerWatch.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <algorithm>
#include <utility>

namespace Velloro {

namespace {

/// Lockers try for some seconds to get the keyboard.
constexpr int mostLooks = 12;
constexpr int looksOfALocker = 3;
/// Window managers put the window into one frame or two.
constexpr int deepestFrame = 2;

} // namespace

X11LockerWatch::X11LockerWatch(std::shared_ptr<X11Connection> connection,
                               std::chrono::milliseconds pauseBetweenLooks)
    : m_connection(std::move(connection))
    , m_grab(m_connection)
{
    // Nobody else on this connection asks for events of the root window.
    const uint32_t events = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(m_connection->xcb(), m_connection->root(), XCB_CW_EVENT_MASK,
                                 &events);
    m_connection->flush();
    connect(m_connection.get(), &X11Connection::eventReceived, this, &X11LockerWatch::handleEvent);
    // The server tells of windows, but of no grab.
    m_nextLook.setInterval(pauseBetweenLooks);
    connect(&m_nextLook, &QTimer::timeout, this, &X11LockerWatch::look);
}

void X11LockerWatch::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & ~0x80) != XCB_MAP_NOTIFY)
        return;
    const auto *mapped = reinterpret_cast<const xcb_map_notify_event_t *>(event);
    if (!mapped->override_redirect || mapped->event != m_connection->root()
        || !coversScreen(mapped->window))
        return;
    m_candidate = mapped->window;
    m_looksLeft = mostLooks;
    m_timesTaken = 0;
    m_nextLook.start();
}

void X11LockerWatch::look()
{
    m_timesTaken = m_grab.isGrabbed() ? m_timesTaken + 1 : 0;
    if (--m_looksLeft == 0 || !coversScreen(m_candidate) || isManaged(m_candidate, 0)) {
        m_nextLook.stop();
    } else if (m_timesTaken == looksOfALocker) {
        m_nextLook.stop();
        Q_EMIT lockerAppeared();
    }
}

bool X11LockerWatch::coversScreen(xcb_window_t window) const
{
    xcb_connection_t *xcb = m_connection->xcb();
    const auto attributesAsked = xcb_get_window_attributes(xcb, window);
    const auto placeAsked = xcb_get_geometry(xcb, window);
    const auto screenAsked = xcb_get_geometry(xcb, m_connection->root());
    const XcbReply<xcb_get_window_attributes_reply_t> attributes(
        xcb_get_window_attributes_reply(xcb, attributesAsked, nullptr));
    const XcbReply<xcb_get_geometry_reply_t> place(
        xcb_get_geometry_reply(xcb, placeAsked, nullptr));
    const XcbReply<xcb_get_geometry_reply_t> screen(
        xcb_get_geometry_reply(xcb, screenAsked, nullptr));
    return attributes && place && screen && attributes->map_state == XCB_MAP_STATE_VIEWABLE
        && place->x <= 0 && place->y <= 0 && place->x + place->width >= screen->width
        && place->y + place->height >= screen->height;
}

bool X11LockerWatch::isManaged(xcb_window_t window, int depth) const
{
    xcb_connection_t *xcb = m_connection->xcb();
    const XcbReply<xcb_get_property_reply_t> state(
        xcb_get_property_reply(xcb,
                               xcb_get_property(xcb, 0, window, m_connection->atom("WM_STATE"),
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, 0),
                               nullptr));
    if (state && state->type != XCB_ATOM_NONE)
        return true;
    const XcbReply<xcb_query_tree_reply_t> tree(
        depth < deepestFrame ? xcb_query_tree_reply(xcb, xcb_query_tree(xcb, window), nullptr)
                             : nullptr);
    if (!tree)
        return false;
    const xcb_window_t *children = xcb_query_tree_children(tree.get());
    return std::any_of(children, children + xcb_query_tree_children_length(tree.get()),
                       [&](xcb_window_t child) { return isManaged(child, depth + 1); });
}

} // namespace Velloro
