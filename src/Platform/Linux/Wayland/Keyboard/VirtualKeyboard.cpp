#include "Platform/Linux/Wayland/Keyboard/VirtualKeyboard.h"

#include "Base/FileDescriptor.h"

#include <QByteArray>
#include <linux/input-event-codes.h>
#include <sys/mman.h>
#include <unistd.h>
#include <virtual-keyboard-client.h>

namespace Velloro {

namespace {

// The keys lie where they usually do: GTK 3 does not take a shortcut from other places, and web
// pages are told the place of each key. The numbers are the kernel's plus 8.
constexpr char keymap[] = R"(xkb_keymap {
xkb_keycodes "velloro" {
    minimum = 8;
    maximum = 255;
    <BKSP> = 22;
    <LCTL> = 37;
    <LFSH> = 50;
    <AB04> = 55;
    <LALT> = 64;
    <INS> = 118;
};
xkb_types "velloro" { include "complete" };
xkb_compatibility "velloro" { include "complete" };
xkb_symbols "velloro" {
    key <BKSP> { [ BackSpace ] };
    key <LCTL> { [ Control_L ] };
    key <LFSH> { [ Shift_L ] };
    key <AB04> { [ v, V ] };
    key <LALT> { [ Alt_L ] };
    key <INS> { [ Insert ] };
    modifier_map Shift { <LFSH> };
    modifier_map Control { <LCTL> };
    modifier_map Mod1 { <LALT> };
};
};
)";
// These two have the same numbers in every keymap.
constexpr uint32_t shiftMask = 1;
constexpr uint32_t controlMask = 4;

} // namespace

std::unique_ptr<VirtualKeyboard> VirtualKeyboard::make(WaylandConnection &connection)
{
    if (!connection.seat())
        return nullptr;
    const WaylandHandle<zwp_virtual_keyboard_manager_v1> manager(
        connection.bind<zwp_virtual_keyboard_manager_v1>(zwp_virtual_keyboard_manager_v1_interface,
                                                         1),
        {zwp_virtual_keyboard_manager_v1_destroy});
    if (!manager)
        return nullptr;
    std::unique_ptr<VirtualKeyboard> made(new VirtualKeyboard(
        zwp_virtual_keyboard_manager_v1_create_virtual_keyboard(manager.get(), connection.seat())));
    return made->uploadKeymap() ? std::move(made) : nullptr;
}

VirtualKeyboard::VirtualKeyboard(zwp_virtual_keyboard_v1 *keyboard)
    : m_keyboard(keyboard, {zwp_virtual_keyboard_v1_destroy})
{
    m_clock.start();
}

bool VirtualKeyboard::uploadKeymap()
{
    const FileDescriptor file(memfd_create("keymap", MFD_CLOEXEC));
    if (write(file.get(), keymap, sizeof keymap) != sizeof keymap)
        return false;
    zwp_virtual_keyboard_v1_keymap(m_keyboard.get(), WL_KEYBOARD_KEYMAP_FORMAT_XKB_V1, file.get(),
                                   sizeof keymap);
    return true;
}

bool VirtualKeyboard::press(const Stroke &stroke)
{
    if (stroke.isWithControl)
        sendKey(KEY_LEFTCTRL, true);
    if (stroke.isWithShift)
        sendKey(KEY_LEFTSHIFT, true);
    // The compositor does not work them out from the keys.
    zwp_virtual_keyboard_v1_modifiers(
        m_keyboard.get(),
        (stroke.isWithControl ? controlMask : 0) | (stroke.isWithShift ? shiftMask : 0), 0, 0, 0);
    sendKey(stroke.key, true);
    return true;
}

void VirtualKeyboard::release(const Stroke &stroke)
{
    sendKey(stroke.key, false);
    if (stroke.isWithShift)
        sendKey(KEY_LEFTSHIFT, false);
    if (stroke.isWithControl)
        sendKey(KEY_LEFTCTRL, false);
    zwp_virtual_keyboard_v1_modifiers(m_keyboard.get(), 0, 0, 0, 0);
}

void VirtualKeyboard::sendKey(uint32_t key, bool isDown)
{
    zwp_virtual_keyboard_v1_key(m_keyboard.get(), static_cast<uint32_t>(m_clock.elapsed()), key,
                                isDown ? WL_KEYBOARD_KEY_STATE_PRESSED
                                       : WL_KEYBOARD_KEY_STATE_RELEASED);
}

} // namespace Velloro
