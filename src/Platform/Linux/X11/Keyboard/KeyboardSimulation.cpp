#include "Platform/Linux/X11/Keyboard/KeyboardSimulation.h"

namespace Velloro {

KeyboardSimulation::KeyboardSimulation(xkb_keymap *keymap, const KeyboardLocks &locks)
    : m_state(xkb_state_new(keymap))
{
    xkb_state_update_mask(m_state.get(), 0, 0, locks.modifiers, 0, 0, locks.layout);
    // A layout that this keymap lacks is counted as one that it has.
    m_initialLocks = this->locks();
}

void KeyboardSimulation::press(uint8_t keycode)
{
    xkb_state_update_key(m_state.get(), keycode, XKB_KEY_DOWN);
}

void KeyboardSimulation::release(uint8_t keycode)
{
    xkb_state_update_key(m_state.get(), keycode, XKB_KEY_UP);
}

uint8_t KeyboardSimulation::serialized(xkb_state_component component) const
{
    // The lowest eight are those of X; the others only have names.
    return static_cast<uint8_t>(xkb_state_serialize_mods(m_state.get(), component));
}

KeyboardLocks KeyboardSimulation::locks() const
{
    return {serialized(XKB_STATE_MODS_LOCKED),
            xkb_state_serialize_layout(m_state.get(), XKB_STATE_LAYOUT_LOCKED)};
}

uint8_t KeyboardSimulation::heldModifiers() const
{
    return serialized(XKB_STATE_MODS_DEPRESSED);
}

xkb_layout_index_t KeyboardSimulation::layoutOf(uint8_t keycode) const
{
    return xkb_state_key_get_layout(m_state.get(), keycode);
}

bool KeyboardSimulation::isUndisturbed() const
{
    return locks() == m_initialLocks && serialized(XKB_STATE_MODS_LATCHED) == 0
        && xkb_state_serialize_layout(m_state.get(), XKB_STATE_LAYOUT_LATCHED) == 0;
}

bool KeyboardSimulation::holdsAny() const
{
    return heldModifiers() != 0
        || xkb_state_serialize_layout(m_state.get(), XKB_STATE_LAYOUT_DEPRESSED) != 0;
}

} // namespace Velloro
