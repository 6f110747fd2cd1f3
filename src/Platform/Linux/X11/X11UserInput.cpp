#include "Platform/Linux/X11/X11UserInput.h"

#include "Platform/Linux/X11/XcbReply.h"

#include <utility>
#include <xcb/xinput.h>

namespace Velloro {

namespace {

// Of the master devices: what is grabbed from them does not reach the applications either.
constexpr uint16_t devices = XCB_INPUT_DEVICE_ALL_MASTER;
constexpr uint32_t events = XCB_INPUT_XI_EVENT_MASK_RAW_KEY_PRESS
    | XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS | XCB_INPUT_XI_EVENT_MASK_RAW_TOUCH_BEGIN;

} // namespace

X11UserInput::X11UserInput(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
    if (!m_connection)
        return;
    m_keymap = std::make_unique<X11Keymap>(m_connection);
    connect(m_connection.get(), &X11Connection::eventReceived, this, &X11UserInput::handleEvent);
    connect(m_connection.get(), &X11Connection::syntheticKeyComing, this,
            [this](uint8_t keycode) { m_ownKeys[keycode] += m_isFollowing; });
    connect(m_connection.get(), &X11Connection::hotkeyTaken, this, &X11UserInput::leaveOut);
}

void X11UserInput::follow()
{
    if (!m_connection || !m_connection->isAlive())
        return;
    m_isFollowing = true;
    m_connection->addInputEvents(devices, events);
}

void X11UserInput::unfollow()
{
    if (!std::exchange(m_isFollowing, false) || !m_connection->isAlive())
        return;
    m_connection->removeInputEvents(devices, events);
    m_ownKeys = {};
}

uint64_t X11UserInput::presses()
{
    if (!m_isFollowing || !m_connection->isAlive())
        return m_presses;
    // The answer comes after the news of every press before it.
    const XcbReply<xcb_get_input_focus_reply_t> answer(xcb_get_input_focus_reply(
        m_connection->xcb(), xcb_get_input_focus(m_connection->xcb()), nullptr));
    m_connection->dispatchPending();
    // The server passes over the press of a key that is down already.
    m_ownKeys = {};
    return m_presses;
}

void X11UserInput::handleEvent(const xcb_generic_event_t *event)
{
    if (!m_isFollowing || (event->response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto *generic = reinterpret_cast<const xcb_ge_generic_event_t *>(event);
    if (generic->extension != m_connection->inputOpcode())
        return;
    switch (generic->event_type) {
    case XCB_INPUT_RAW_KEY_PRESS: {
        const auto *press = reinterpret_cast<const xcb_input_raw_key_press_event_t *>(event);
        handleKey(static_cast<uint8_t>(press->detail));
        break;
    }
    case XCB_INPUT_RAW_BUTTON_PRESS:
    case XCB_INPUT_RAW_TOUCH_BEGIN:
        ++m_presses;
        break;
    default:
        break;
    }
}

void X11UserInput::handleKey(uint8_t keycode)
{
    if (m_ownKeys[keycode] > 0)
        --m_ownKeys[keycode];
    else if (!m_keymap->heldModifierKeys()[keycode])
        ++m_presses;
}

void X11UserInput::leaveOut(uint8_t keycode)
{
    // It was told of as a key before it was told of as a hotkey.
    if (m_isFollowing && m_presses > 0 && !m_keymap->heldModifierKeys()[keycode])
        --m_presses;
}

} // namespace Velloro
