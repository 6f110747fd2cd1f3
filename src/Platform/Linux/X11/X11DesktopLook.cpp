#include "Platform/Linux/X11/X11DesktopLook.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <xcb/xfixes.h>

namespace Velloro {

namespace {

constexpr uint8_t eventTypeMask = 0x7f;

} // namespace

X11DesktopLook::X11DesktopLook(std::shared_ptr<X11Connection> connection, QObject *parent)
    : DesktopLook(parent)
    , m_connection(std::move(connection))
{
    if (!m_connection)
        return;
    int index = 0;
    for (auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection->xcb()));
         screens.rem > 0; xcb_screen_next(&screens), ++index) {
        if (screens.data->root == m_connection->root())
            m_screen = index;
    }
    m_compositor = "_NET_WM_CM_S" + QByteArray::number(m_screen);
    m_tray = "_NET_SYSTEM_TRAY_S" + QByteArray::number(m_screen);
    watchManagers();
    connect(m_connection.get(), &X11Connection::eventReceived, this,
            &X11DesktopLook::eventReceived);
    update();
}

void X11DesktopLook::watchManagers()
{
    xcb_connection_t *xcb = m_connection->xcb();
    // A manager that starts announces itself on the root window, if it keeps to the convention.
    const uint32_t announcements = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
    xcb_change_window_attributes(xcb, m_connection->root(), XCB_CW_EVENT_MASK, &announcements);
    // Not every one does, and one may give its selection up and live on; the server tells of both.
    const auto *fixes = xcb_get_extension_data(xcb, &xcb_xfixes_id);
    if (!fixes || !fixes->present)
        return;
    const XcbReply<xcb_xfixes_query_version_reply_t> version(
        xcb_xfixes_query_version_reply(xcb, xcb_xfixes_query_version(xcb, 1, 0), nullptr));
    if (!version)
        return;
    m_ownerEvent = fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY;
    constexpr uint32_t changes = XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER
        | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_WINDOW_DESTROY
        | XCB_XFIXES_SELECTION_EVENT_MASK_SELECTION_CLIENT_CLOSE;
    for (const QByteArray &selection : {m_compositor, m_tray})
        xcb_xfixes_select_selection_input(xcb, m_connection->root(), m_connection->atom(selection),
                                          changes);
    m_connection->flush();
}

void X11DesktopLook::eventReceived(const xcb_generic_event_t *event)
{
    const int type = event->response_type & eventTypeMask;
    if (m_ownerEvent && type == *m_ownerEvent) {
        update();
        return;
    }
    switch (type) {
    case XCB_CLIENT_MESSAGE:
        if (reinterpret_cast<const xcb_client_message_event_t *>(event)->type
            == m_connection->atom("MANAGER"))
            update();
        break;
    case XCB_DESTROY_NOTIFY:
        update();
        break;
    case XCB_PROPERTY_NOTIFY:
        if (reinterpret_cast<const xcb_property_notify_event_t *>(event)->atom
            == m_connection->atom("_NET_SYSTEM_TRAY_COLORS"))
            update();
        break;
    default:
        break;
    }
}

void X11DesktopLook::update()
{
    const bool isCompositing = owner(m_compositor) != XCB_WINDOW_NONE;
    const xcb_window_t tray = owner(m_tray);
    const bool hasTray = tray != XCB_WINDOW_NONE;
    const std::optional<bool> isTrayDark = readTrayColors(tray);
    if (isCompositing == m_isCompositing && hasTray == m_hasTray && isTrayDark == m_isTrayDark)
        return;
    m_isCompositing = isCompositing;
    m_hasTray = hasTray;
    m_isTrayDark = isTrayDark;
    Q_EMIT changed();
}

xcb_window_t X11DesktopLook::owner(const QByteArray &selection)
{
    if (!m_connection->isAlive())
        return XCB_WINDOW_NONE;
    const XcbReply<xcb_get_selection_owner_reply_t> reply(xcb_get_selection_owner_reply(
        m_connection->xcb(),
        xcb_get_selection_owner(m_connection->xcb(), m_connection->atom(selection)), nullptr));
    if (!reply || reply->owner == XCB_WINDOW_NONE)
        return XCB_WINDOW_NONE;
    // The end of a manager is the end of its window.
    const uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(m_connection->xcb(), reply->owner, XCB_CW_EVENT_MASK, &mask);
    m_connection->flush();
    return reply->owner;
}

std::optional<bool> X11DesktopLook::readTrayColors(xcb_window_t tray)
{
    // Four colours of three components of 16 bits; the first is that of plain symbols.
    constexpr uint32_t components = 12;
    if (tray == XCB_WINDOW_NONE)
        return std::nullopt;
    const XcbReply<xcb_get_property_reply_t> reply(
        xcb_get_property_reply(m_connection->xcb(),
                               xcb_get_property(m_connection->xcb(), 0, tray,
                                                m_connection->atom("_NET_SYSTEM_TRAY_COLORS"),
                                                XCB_ATOM_CARDINAL, 0, components),
                               nullptr));
    if (!reply || reply->format != 32 || reply->value_len < 3)
        return std::nullopt;
    const auto *values = static_cast<const uint32_t *>(xcb_get_property_value(reply.get()));
    const double brightness = (0.299 * values[0] + 0.587 * values[1] + 0.114 * values[2]) / 0xffff;
    return brightness > 0.5;
}

} // namespace Velloro
