#pragma once

#include "Base/FileDescriptor.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"
#include "Platform/PhysicalKeyboard.h"

#include <QElapsedTimer>
#include <initializer_list>
#include <memory>
#include <sys/mman.h>
#include <unistd.h>
#include <virtual-keyboard-client.h>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

/// The text of the keymap of these layouts, separated by commas.
inline QByteArray keymapText(const char *layouts)
{
    const xkb_rule_names names{"evdev", "pc105", layouts, "", ""};
    xkb_context *context = xkb_context_new(XKB_CONTEXT_NO_FLAGS);
    xkb_keymap *keymap = xkb_keymap_new_from_names(context, &names, XKB_KEYMAP_COMPILE_NO_FLAGS);
    char *text = xkb_keymap_get_as_string(keymap, XKB_KEYMAP_FORMAT_TEXT_V1);
    const QByteArray result(text);
    free(text);
    xkb_keymap_unref(keymap);
    xkb_context_unref(context);
    return result;
}

/// A keyboard of a wlroots compositor, on which the test presses keys as a user does.
class WaylandKeyboard
{
public:
    explicit WaylandKeyboard(const char *layouts = "us")
    {
        const QByteArray text = keymapText(layouts);
        const FileDescriptor file(memfd_create("keymap", MFD_CLOEXEC));
        (void)!write(file.get(), text.constData(), size_t(text.size()) + 1);
        zwp_virtual_keyboard_v1_keymap(m_keyboard, WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                       uint32_t(text.size()) + 1);
        m_display->roundtrip(QDeadlineTimer(10'000));
        m_time.start();
    }
    ~WaylandKeyboard()
    {
        zwp_virtual_keyboard_v1_destroy(m_keyboard);
        zwp_virtual_keyboard_manager_v1_destroy(m_manager);
    }

    /// By X keycodes; the compositor has dealt with it when this returns.
    void press(std::initializer_list<uint8_t> keys)
    {
        for (const uint8_t key : keys)
            move(key, true);
    }
    void release(std::initializer_list<uint8_t> keys)
    {
        for (const uint8_t key : keys)
            move(key, false);
    }
    void tap(std::initializer_list<uint8_t> keys)
    {
        press(keys);
        for (auto key = std::rbegin(keys); key != std::rend(keys); ++key)
            move(*key, false);
    }

private:
    void move(uint8_t key, bool isDown)
    {
        zwp_virtual_keyboard_v1_key(m_keyboard, uint32_t(m_time.elapsed()), key - 8U, isDown);
        // The compositor leaves it to the keyboard to tell of them.
        constexpr std::pair<uint8_t, uint32_t> modifiers[]
            = {{Key::leftShift, 1}, {Key::leftControl, 4}, {Key::leftAlt, 8}, {Key::leftSuper, 64}};
        for (const auto &[modifier, mask] : modifiers) {
            if (key == modifier)
                m_modifiers = isDown ? m_modifiers | mask : m_modifiers & ~mask;
        }
        zwp_virtual_keyboard_v1_modifiers(m_keyboard, m_modifiers, 0, 0, 0);
        m_display->roundtrip(QDeadlineTimer(10'000));
    }

    std::shared_ptr<WaylandConnection> m_display = WaylandConnection::open();
    zwp_virtual_keyboard_manager_v1 *m_manager = m_display->bind<zwp_virtual_keyboard_manager_v1>(
        zwp_virtual_keyboard_manager_v1_interface, 1);
    zwp_virtual_keyboard_v1 *m_keyboard
        = zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(m_manager, m_display->seat());
    uint32_t m_modifiers = 0;
    QElapsedTimer m_time;
};

} // namespace Velloro
