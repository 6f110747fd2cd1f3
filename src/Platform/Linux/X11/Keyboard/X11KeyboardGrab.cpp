#include "Platform/Linux/X11/Keyboard/X11KeyboardGrab.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <QDeadlineTimer>
#include <chrono>
#include <thread>
#include <utility>
#include <xcb/xinput.h>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto patience = 100ms;
constexpr auto interval = 5ms;

} // namespace

X11KeyboardGrab::X11KeyboardGrab(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
    , m_keymap(m_connection)
    , m_keyboards(m_connection)
    , m_window(xcb_generate_id(m_connection->xcb()))
{
    xcb_create_window(m_connection->xcb(), 0, m_window, m_connection->root(), -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
}

X11KeyboardGrab::~X11KeyboardGrab()
{
    if (m_connection->isAlive())
        xcb_destroy_window(m_connection->xcb(), m_window);
}

bool X11KeyboardGrab::isGrabbed()
{
    if (!m_connection->isAlive())
        return false;
    // The server looks for another's grab before it finds that this window can't be seen, so that
    // asking takes the keyboard from nobody.
    const XcbReply<xcb_grab_keyboard_reply_t> reply(xcb_grab_keyboard_reply(
        m_connection->xcb(),
        xcb_grab_keyboard(m_connection->xcb(), 0, m_window, XCB_CURRENT_TIME, XCB_GRAB_MODE_ASYNC,
                          XCB_GRAB_MODE_ASYNC),
        nullptr));
    return reply && reply->status == XCB_GRAB_STATUS_ALREADY_GRABBED;
}

bool X11KeyboardGrab::setsOffGrab(uint8_t keycode)
{
    // The server refuses what another program has, with whichever modifiers.
    xcb_connection_t *xcb = m_connection->xcb();
    const auto cookie = xcb_grab_key_checked(xcb, 1, m_connection->root(), XCB_MOD_MASK_ANY,
                                             keycode, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
    xcb_ungrab_key(xcb, keycode, m_connection->root(), XCB_MOD_MASK_ANY);
    if (const XcbReply<xcb_generic_error_t> error{xcb_request_check(xcb, cookie)})
        return error->error_code == XCB_ACCESS;
    if (m_connection->inputOpcode() == 0)
        return false;

    // Grabs of the newer kind are not seen by that.
    const uint32_t anyModifier = XCB_INPUT_MODIFIER_MASK_ANY;
    const uint32_t events = XCB_INPUT_XI_EVENT_MASK_KEY_PRESS;
    for (const uint16_t master : m_keyboards.masterKeyboards()) {
        const XcbReply<xcb_input_xi_passive_grab_device_reply_t> refusal(
            xcb_input_xi_passive_grab_device_reply(
                xcb,
                xcb_input_xi_passive_grab_device(
                    xcb, XCB_CURRENT_TIME, m_connection->root(), XCB_CURSOR_NONE, keycode, master,
                    1, 1, XCB_INPUT_GRAB_TYPE_KEYCODE, XCB_INPUT_GRAB_MODE_22_ASYNC,
                    XCB_INPUT_GRAB_MODE_22_ASYNC, XCB_INPUT_GRAB_OWNER_NO_OWNER, &events,
                    &anyModifier),
                nullptr));
        xcb_input_xi_passive_ungrab_device(xcb, m_connection->root(), keycode, master, 1,
                                           XCB_INPUT_GRAB_TYPE_KEYCODE, &anyModifier);
        if (refusal && refusal->num_modifiers > 0)
            return true;
    }
    return false;
}

bool X11KeyboardGrab::isHeldByAnother()
{
    if (!isGrabbed())
        return false;
    KeySet modifiers = m_keyboards.logicallyHeld() & m_keymap.heldModifierKeys();
    for (size_t key = 0; key < modifiers.size(); ++key) {
        modifiers[key] = modifiers[key] && setsOffGrab(static_cast<uint8_t>(key));
        if (modifiers[key])
            m_keyboards.fakeKey(static_cast<uint8_t>(key), false);
    }
    // Nobody tells when a grab ends; its owner may have to think about the key first.
    for (const QDeadlineTimer deadline(patience); modifiers.any() && !deadline.hasExpired();) {
        if (!isGrabbed())
            return false;
        std::this_thread::sleep_for(interval);
    }
    return true;
}

} // namespace Velloro
