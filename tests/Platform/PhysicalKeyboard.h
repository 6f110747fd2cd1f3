#pragma once

#include "Base/StringLiterals.h"
#include "Platform/Linux/X11/Keyboard/XcbKeyboardExtension.h"
#include "Platform/Linux/X11/XcbReply.h"

#include <QProcess>
#include <QStringList>
#include <cstdint>
#include <gtest/gtest.h>
#include <initializer_list>
#include <string_view>
#include <xcb/xcb.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

namespace Velloro {

/// Keycodes by position.
namespace Key {
constexpr uint8_t escape = 9, a = 38, k = 45, space = 65, leftAlt = 64, leftShift = 50,
                  leftControl = 37, leftSuper = 133, capsLock = 66, numLock = 77, menu = 135,
                  f5 = 71, backspace = 22, rightShift = 62;
} // namespace Key

/// Gives the X server the layout with these arguments of setxkbmap, and no others' options.
inline void setKeyboardLayout(const QStringList &arguments)
{
    const QStringList reset{u"-option"_s, QString()};
    ASSERT_EQ(QProcess::execute(u"setxkbmap"_s, reset + arguments), 0);
}

/// Gives the X server the American layout with these statements in its symbols.
inline void setKeySymbols(const QByteArray &statements)
{
    QProcess compiler;
    compiler.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    compiler.start(u"xkbcomp"_s, {u"-w0"_s, u"-"_s, qEnvironmentVariable("DISPLAY")});
    compiler.write(R"map(xkb_keymap {
        xkb_keycodes { include "evdev+aliases(qwerty)" };
        xkb_types { include "complete" };
        xkb_compat { include "complete" };
        xkb_symbols { include "pc+us+inet(evdev)" )map"
                   + statements + " }; };");
    compiler.closeWriteChannel();
    ASSERT_TRUE(compiler.waitForFinished());
    ASSERT_EQ(compiler.exitCode(), 0);
}

/// The device from which programs press keys: an on-screen keyboard's keys come from there.
constexpr std::string_view onScreenKeyboard = "Virtual core XTEST keyboard";

/// The virtual server's own keyboard, on which the test presses keys as a user does. What is still
/// down at the end is released.
class PhysicalKeyboard
{
public:
    explicit PhysicalKeyboard(const char *display = nullptr,
                              std::string_view deviceName = "Xvfb keyboard")
        : m_xcb(xcb_connect(display, nullptr))
    {
        const auto *input = xcb_get_extension_data(m_xcb, &xcb_input_id);
        if (!input || !input->present)
            return;
        m_firstEvent = input->first_event;
        const XcbReply<xcb_input_xi_query_version_reply_t> version(xcb_input_xi_query_version_reply(
            m_xcb, xcb_input_xi_query_version(m_xcb, 2, 2), nullptr));
        const XcbReply<xcb_input_xi_query_device_reply_t> devices(xcb_input_xi_query_device_reply(
            m_xcb, xcb_input_xi_query_device(m_xcb, XCB_INPUT_DEVICE_ALL), nullptr));
        if (!devices)
            return;
        for (auto infos = xcb_input_xi_query_device_infos_iterator(devices.get()); infos.rem > 0;
             xcb_input_xi_device_info_next(&infos)) {
            const std::string_view name(
                xcb_input_xi_device_info_name(infos.data),
                static_cast<size_t>(xcb_input_xi_device_info_name_length(infos.data)));
            if (name == deviceName)
                m_device = static_cast<uint8_t>(infos.data->deviceid);
        }
    }

    ~PhysicalKeyboard()
    {
        for (int keycode = 0; keycode < 256; ++keycode) {
            if (m_down[keycode])
                release({static_cast<uint8_t>(keycode)});
        }
        xcb_disconnect(m_xcb);
    }

    PhysicalKeyboard(const PhysicalKeyboard &) = delete;
    PhysicalKeyboard &operator=(const PhysicalKeyboard &) = delete;

    [[nodiscard]] bool isThere() const { return m_device != 0; }

    /// Gives this keyboard alone another layout, and uses it, so that the server knows.
    void setLayout(QStringList arguments)
    {
        setKeyboardLayout(arguments << u"-device"_s << QString::number(m_device));
        tap(Key::escape);
    }

    void press(std::initializer_list<uint8_t> keycodes)
    {
        for (const uint8_t keycode : keycodes)
            send(keycode, true);
    }
    void release(std::initializer_list<uint8_t> keycodes)
    {
        for (const uint8_t keycode : keycodes)
            send(keycode, false);
    }
    void tap(uint8_t keycode)
    {
        press({keycode});
        release({keycode});
    }

    /// Unlocks what is locked: modifiers, and another than the first layout.
    void unlock()
    {
        const XcbReply<xcb_xkb_use_extension_reply_t> used(
            xcb_xkb_use_extension_reply(m_xcb, xcb_xkb_use_extension(m_xcb, 1, 0), nullptr));
        xcb_xkb_latch_lock_state(m_xcb, XCB_XKB_ID_USE_CORE_KBD, 0xff, 0, 1, 0, 0, 0, 0);
        sync();
    }

    /// Takes the keyboard away from the server, or gives it back.
    void setEnabled(bool enabled)
    {
        constexpr std::string_view name = "Device Enabled";
        const XcbReply<xcb_intern_atom_reply_t> atom(xcb_intern_atom_reply(
            m_xcb, xcb_intern_atom(m_xcb, 0, name.size(), name.data()), nullptr));
        const uint8_t value = enabled;
        xcb_input_xi_change_property_items_t items{};
        items.data8 = const_cast<uint8_t *>(&value);
        xcb_input_xi_change_property_aux(m_xcb, m_device, XCB_PROP_MODE_REPLACE,
                                         XCB_INPUT_PROPERTY_FORMAT_8_BITS, atom->atom,
                                         XCB_ATOM_INTEGER, 1, &items);
        sync();
    }

private:
    void send(uint8_t keycode, bool down)
    {
        m_down[keycode] = down;
        // A device's own events are numbered from the extension's first.
        const uint8_t type = m_firstEvent
            + (down ? XCB_INPUT_DEVICE_KEY_PRESS : XCB_INPUT_DEVICE_KEY_RELEASE);
        xcb_test_fake_input(m_xcb, type, keycode, XCB_CURRENT_TIME, XCB_WINDOW_NONE, 0, 0,
                            m_device);
        sync();
    }
    void sync()
    {
        XcbReply<xcb_get_input_focus_reply_t>(
            xcb_get_input_focus_reply(m_xcb, xcb_get_input_focus(m_xcb), nullptr));
    }

    xcb_connection_t *m_xcb;
    uint8_t m_firstEvent = 0;
    uint8_t m_device = 0;
    bool m_down[256] = {};
};

} // namespace Velloro
