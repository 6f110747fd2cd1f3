#include "Platform/Linux/X11/Keyboard/X11ModifierTap.h"

#include "Platform/ModifierKeys.h"

namespace Velloro {

namespace {

/// The keys that set the modifier, one of `ClassicMask`.
KeySet keysOf(X11Keymap &keymap, uint32_t modifier)
{
    const auto mask = keymap.modifierMask(modifier);
    return mask ? keymap.modifierKeys(*mask) : KeySet{};
}

} // namespace

void breakModifierTap(X11Keymap &keymap, X11Keymap &synthetic, X11Keyboards &keyboards)
{
    const KeySet held = keyboards.logicallyHeld() & keymap.heldModifierKeys();
    const KeySet opensMenus = keysOf(keymap, ClassicMask::option)
        | keysOf(keymap, ClassicMask::command);
    std::optional<uint8_t> between;
    if ((held & opensMenus).any()) {
        if ((held & keysOf(keymap, ClassicMask::control)).any())
            return;
        if (!keyboards.hasStickyKeys())
            between = synthetic.plainControlKey();
    }
    if (!between && held.any())
        between = synthetic.unassignedKeycode();
    if (between)
        keyboards.tap(*between);
}

} // namespace Velloro
