#include "Platform/Linux/Wayland/Hotkeys/QtKeys.h"

#include "Platform/Linux/Wayland/WaylandKeymap.h"

#include <QChar>
#include <algorithm>
#include <iterator>
#include <utility>

namespace Velloro::QtKeys {

namespace {

constexpr std::pair<xkb_keysym_t, Qt::Key> namedKeys[] = {
    {XKB_KEY_Escape, Qt::Key_Escape},
    {XKB_KEY_Tab, Qt::Key_Tab},
    {XKB_KEY_ISO_Left_Tab, Qt::Key_Backtab},
    {XKB_KEY_BackSpace, Qt::Key_Backspace},
    {XKB_KEY_Return, Qt::Key_Return},
    {XKB_KEY_KP_Enter, Qt::Key_Enter},
    {XKB_KEY_Insert, Qt::Key_Insert},
    {XKB_KEY_Delete, Qt::Key_Delete},
    {XKB_KEY_Home, Qt::Key_Home},
    {XKB_KEY_End, Qt::Key_End},
    {XKB_KEY_Left, Qt::Key_Left},
    {XKB_KEY_Up, Qt::Key_Up},
    {XKB_KEY_Right, Qt::Key_Right},
    {XKB_KEY_Down, Qt::Key_Down},
    {XKB_KEY_Prior, Qt::Key_PageUp},
    {XKB_KEY_Next, Qt::Key_PageDown},
    {XKB_KEY_Menu, Qt::Key_Menu},
    {XKB_KEY_Henkan, Qt::Key_Henkan},
    {XKB_KEY_Muhenkan, Qt::Key_Muhenkan},
    {XKB_KEY_XF86AudioRaiseVolume, Qt::Key_VolumeUp},
    {XKB_KEY_XF86AudioLowerVolume, Qt::Key_VolumeDown},
    {XKB_KEY_XF86AudioMute, Qt::Key_VolumeMute},
};

int modifiers(uint32_t classicMask)
{
    int result = 0;
    for (const auto &[mask, modifier] : {std::pair{ClassicMask::command, Qt::META},
                                         {ClassicMask::control, Qt::CTRL},
                                         {ClassicMask::option, Qt::ALT},
                                         {ClassicMask::shift, Qt::SHIFT}}) {
        if (classicMask & mask)
            result |= int(modifier);
    }
    return result;
}

} // namespace

int key(xkb_keysym_t keysym)
{
    if (keysym >= XKB_KEY_F1 && keysym <= XKB_KEY_F35)
        return Qt::Key_F1 + int(keysym - XKB_KEY_F1);
    const auto *const named
        = std::ranges::find(namedKeys, keysym, &std::pair<xkb_keysym_t, Qt::Key>::first);
    if (named != std::end(namedKeys))
        return named->second;
    const uint32_t character = xkb_keysym_to_utf32(keysym);
    return character > 0x20 || keysym == XKB_KEY_space ? int(QChar::toUpper(character)) : 0;
}

QList<int> combinations(KeyCombination combination, const WaylandKeymap &keymap)
{
    QList<int> result;
    const auto add = [&](int modifiers, int key) {
        if (key != 0 && !result.contains(modifiers | key))
            result << (modifiers | key);
    };
    const int held = modifiers(combination.modifiers);
    const auto plain = keymap.keysyms(combination.keyCode, false);
    const auto shifted = keymap.keysyms(combination.keyCode, true);
    for (size_t layout = 0; layout < plain.size(); ++layout) {
        add(held, key(plain[layout]));
        // Where Shift makes another symbol, it has done its part and is none of the modifiers.
        if ((held & int(Qt::SHIFT)) && layout < shifted.size()
            && key(shifted[layout]) != key(plain[layout]))
            add(held & ~int(Qt::SHIFT), key(shifted[layout]));
    }
    return result;
}

} // namespace Velloro::QtKeys
