#include "Platform/Linux/X11/Keyboard/X11Keyboards.h"

#include "Platform/Linux/X11/Keyboard/XcbKeyboardExtension.h"
#include "Platform/Linux/X11/XcbReply.h"

#include <xcb/xinput.h>
#include <xcb/xtest.h>
#include <xkbcommon/xkbcommon-x11.h>

namespace Velloro {

namespace {

KeySet keySet(const uint8_t (&bits)[32])
{
    KeySet keys;
    for (size_t keycode = 0; keycode < 256; ++keycode)
        keys[keycode] = bits[keycode / 8] >> (keycode % 8) & 1;
    return keys;
}

bool hasKeys(const xcb_input_xi_device_info_t *device)
{
    for (auto classes = xcb_input_xi_device_info_classes_iterator(device); classes.rem > 0;
         xcb_input_device_class_next(&classes)) {
        if (classes.data->type == XCB_INPUT_DEVICE_CLASS_TYPE_KEY)
            return true;
    }
    return false;
}

XcbReply<xcb_input_xi_query_device_reply_t> queryDevices(X11Connection &connection)
{
    if (!connection.isAlive() || connection.inputOpcode() == 0)
        return nullptr;
    return XcbReply<xcb_input_xi_query_device_reply_t>(xcb_input_xi_query_device_reply(
        connection.xcb(), xcb_input_xi_query_device(connection.xcb(), XCB_INPUT_DEVICE_ALL),
        nullptr));
}

} // namespace

X11Keyboards::X11Keyboards(std::shared_ptr<X11Connection> connection)
    : m_connection(std::move(connection))
{
}

std::vector<X11Keyboards::Device> X11Keyboards::slaveKeyboards() const
{
    const auto reply = queryDevices(*m_connection);
    if (!reply)
        return {};

    // A keyboard whose grab is active floats until the key is released.
    std::vector<Device> devices;
    for (auto infos = xcb_input_xi_query_device_infos_iterator(reply.get()); infos.rem > 0;
         xcb_input_xi_device_info_next(&infos)) {
        const bool isKeyboard = infos.data->type == XCB_INPUT_DEVICE_TYPE_SLAVE_KEYBOARD
            || (infos.data->type == XCB_INPUT_DEVICE_TYPE_FLOATING_SLAVE && hasKeys(infos.data));
        if (isKeyboard && infos.data->enabled)
            devices.push_back({infos.data->deviceid, infos.data->attachment, false});
    }

    // The server marks the device of synthetic strokes by a property.
    const xcb_atom_t mark = m_connection->atom("XTEST Device");
    std::vector<xcb_input_xi_get_property_cookie_t> cookies;
    for (const Device &device : devices) {
        cookies.push_back(xcb_input_xi_get_property_unchecked(m_connection->xcb(), device.id, 0,
                                                              mark, XCB_ATOM_ANY, 0, 1));
    }
    for (size_t i = 0; i < devices.size(); ++i) {
        const XcbReply<xcb_input_xi_get_property_reply_t> property(
            xcb_input_xi_get_property_reply(m_connection->xcb(), cookies[i], nullptr));
        devices[i].isSynthetic = property && property->type != XCB_ATOM_NONE;
    }
    return devices;
}

std::vector<uint16_t> X11Keyboards::physicalKeyboards() const
{
    return keyboards(false);
}

std::vector<uint16_t> X11Keyboards::syntheticKeyboards() const
{
    return keyboards(true);
}

std::vector<uint16_t> X11Keyboards::keyboards(bool areSynthetic) const
{
    std::vector<uint16_t> ids;
    for (const Device &device : slaveKeyboards()) {
        if (device.isSynthetic == areSynthetic)
            ids.push_back(device.id);
    }
    return ids;
}

std::vector<uint16_t> X11Keyboards::masterKeyboards() const
{
    std::vector<uint16_t> ids;
    const auto reply = queryDevices(*m_connection);
    if (!reply)
        return ids;
    for (auto infos = xcb_input_xi_query_device_infos_iterator(reply.get()); infos.rem > 0;
         xcb_input_xi_device_info_next(&infos)) {
        if (infos.data->type == XCB_INPUT_DEVICE_TYPE_MASTER_KEYBOARD)
            ids.push_back(infos.data->deviceid);
    }
    return ids;
}

std::optional<uint16_t> X11Keyboards::syntheticKeyboard() const
{
    if (!m_connection->isAlive() || m_connection->keyboardEventBase() == 0)
        return std::nullopt;
    // Each master keyboard has one of its own.
    const int32_t master = xkb_x11_get_core_keyboard_device_id(m_connection->xcb());
    for (const Device &device : slaveKeyboards()) {
        if (device.isSynthetic && device.master == master)
            return device.id;
    }
    return std::nullopt;
}

KeySet X11Keyboards::heldOn(const std::vector<uint16_t> &devices) const
{
    std::vector<xcb_input_query_device_state_cookie_t> cookies;
    for (const uint16_t device : devices) {
        cookies.push_back(xcb_input_query_device_state_unchecked(m_connection->xcb(),
                                                                 static_cast<uint8_t>(device)));
    }
    KeySet keys;
    for (const auto &cookie : cookies) {
        const XcbReply<xcb_input_query_device_state_reply_t> reply(
            xcb_input_query_device_state_reply(m_connection->xcb(), cookie, nullptr));
        if (!reply)
            continue;
        for (auto states = xcb_input_query_device_state_classes_iterator(reply.get());
             states.rem > 0; xcb_input_input_state_next(&states)) {
            if (states.data->class_id == XCB_INPUT_INPUT_CLASS_KEY)
                keys |= keySet(reinterpret_cast<const xcb_input_key_state_t *>(states.data)->keys);
        }
    }
    return keys;
}

KeySet X11Keyboards::physicallyHeld() const
{
    return heldOn(physicalKeyboards());
}

KeySet X11Keyboards::heldOnAnyKeyboard() const
{
    std::vector<uint16_t> ids;
    for (const Device &device : slaveKeyboards())
        ids.push_back(device.id);
    return heldOn(ids);
}

KeySet X11Keyboards::logicallyHeld() const
{
    if (!m_connection->isAlive())
        return {};
    const XcbReply<xcb_query_keymap_reply_t> reply(xcb_query_keymap_reply(
        m_connection->xcb(), xcb_query_keymap(m_connection->xcb()), nullptr));
    return reply ? keySet(reply->keys) : KeySet{};
}

uint8_t X11Keyboards::modifierState() const
{
    if (!m_connection->isAlive() || m_connection->keyboardEventBase() == 0)
        return 0;
    const XcbReply<xcb_xkb_get_state_reply_t> state(xcb_xkb_get_state_reply(
        m_connection->xcb(), xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD),
        nullptr));
    return state ? state->mods : 0;
}

bool X11Keyboards::hasStickyKeys() const
{
    if (!m_connection->isAlive() || m_connection->keyboardEventBase() == 0)
        return false;
    const XcbReply<xcb_xkb_get_controls_reply_t> controls(xcb_xkb_get_controls_reply(
        m_connection->xcb(), xcb_xkb_get_controls(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD),
        nullptr));
    return controls && controls->enabledControls & XCB_XKB_BOOL_CTRL_STICKY_KEYS;
}

void X11Keyboards::fakeKey(uint8_t keycode, bool down)
{
    if (!m_connection->isAlive() || !m_connection->hasXTest())
        return;
    if (down)
        Q_EMIT m_connection->syntheticKeyComing(keycode);
    xcb_test_fake_input(m_connection->xcb(), down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, keycode,
                        XCB_CURRENT_TIME, m_connection->root(), 0, 0, 0);
    if (!down)
        Q_EMIT m_connection->syntheticKeyGone(keycode);
    m_connection->flush();
}

void X11Keyboards::tap(uint8_t keycode)
{
    fakeKey(keycode, true);
    fakeKey(keycode, false);
}

void X11Keyboards::lockModifiers(uint8_t modifiers, bool locked)
{
    if (!m_connection->isAlive() || m_connection->keyboardEventBase() == 0)
        return;
    xcb_xkb_latch_lock_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, modifiers,
                             locked ? modifiers : 0, 0, 0, 0, 0, 0);
    m_connection->flush();
}

} // namespace Velloro
