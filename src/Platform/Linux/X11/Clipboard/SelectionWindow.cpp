#include "Platform/Linux/X11/Clipboard/SelectionWindow.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <utility>
#include <xcb/xfixes.h>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

// For the X server itself, without which nothing goes on.
constexpr auto serverPatience = 2s;
// More than are asked for while a program that is slow may still answer.
constexpr unsigned propertyNames = 256;

} // namespace

SelectionWindow::SelectionWindow(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_id(xcb_generate_id(m_connection->xcb()))
    , m_clock(m_connection->atom("VELLORO_CLOCK"))
{
    xcb_connection_t *xcb = m_connection->xcb();
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(xcb, 0, m_id, m_connection->root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                      &events);

    const auto *fixes = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    if (fixes && fixes->present) {
        // The server serves only who has asked for the version.
        const XcbReply<xcb_xfixes_query_version_reply_t> version(
            xcb_xfixes_query_version_reply(xcb, xcb_xfixes_query_version(xcb, 1, 0), nullptr));
        if (version)
            m_ownerEvent = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    }
    m_connection->flush();
}

SelectionWindow::~SelectionWindow()
{
    if (!m_connection->isAlive())
        return;
    xcb_destroy_window(m_connection->xcb(), m_id);
    m_connection->flush();
}

xcb_timestamp_t SelectionWindow::serverTime()
{
    m_serverTimeArrived = false;
    xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_APPEND, m_id, m_clock, XCB_ATOM_STRING,
                        8, 0, nullptr);
    m_connection->dispatchUntil([this] { return m_serverTimeArrived; },
                                QDeadlineTimer(serverPatience));
    return m_serverTime;
}

xcb_atom_t SelectionWindow::unusedProperty()
{
    const xcb_atom_t name = m_connection->atom(
        "VELLORO_SELECTION_" + QByteArray::number(m_properties++ % propertyNames));
    xcb_delete_property(m_connection->xcb(), m_id, name);
    return name;
}

SelectionContent::Form SelectionWindow::takeProperty(xcb_atom_t name)
{
    constexpr uint32_t everything = 0x1fffffff;
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection->xcb(),
                               xcb_get_property(m_connection->xcb(), 1, m_id, name,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, everything),
                               nullptr));
    if (!reply)
        return {};
    return {XCB_ATOM_NONE, reply->type, reply->format,
            QByteArray(static_cast<const char *>(xcb_get_property_value(reply.get())),
                       xcb_get_property_value_length(reply.get()))};
}

void SelectionWindow::watchOwner(xcb_atom_t selection)
{
    if (m_ownerEvent == 0)
        return;
    constexpr uint32_t changes = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
        | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
        | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    xcb_xfixes_select_selection_input(m_connection->xcb(), m_id, selection, changes);
    m_connection->flush();
}

void SelectionWindow::handleEvent(const xcb_generic_event_t *event)
{
    if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
        return;
    const auto &change = *reinterpret_cast<const xcb_property_notify_event_t *>(event);
    if (change.window == m_id && change.atom == m_clock) {
        m_serverTime = change.time;
        m_serverTimeArrived = true;
    }
}

} // namespace Velloro
