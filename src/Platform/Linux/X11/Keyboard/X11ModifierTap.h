#pragma once

#include "Platform/Linux/X11/Keyboard/X11Keyboards.h"
#include "Platform/Linux/X11/Keyboard/X11Keymap.h"

namespace Velloro {

/// Sees to it that modifiers which go up now are not taken for a tap on them, although the
/// application saw no key with them: a tap on Alt or Super opens menus, one on Shift may switch the
/// input method.
///
/// Alt and Super get a tap of Control between, which every application understands and which types
/// nothing anywhere. Where Control itself is held it has come between already, and where a tap of
/// it would do something else (it switches the layout, or would stick), as well as for the other
/// modifiers, a key without a meaning is tapped.
///
/// `keymap` tells what the held keys are, `synthetic` what keys do on the device that taps.
void breakModifierTap(X11Keymap &keymap, X11Keymap &synthetic, X11Keyboards &keyboards);

} // namespace Velloro
