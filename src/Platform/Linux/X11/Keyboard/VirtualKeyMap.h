#pragma once

#include <cstdint>
#include <optional>

namespace Velloro {

/// Virtual key codes and X keycodes of the same positions on the keyboard.
namespace VirtualKeyMap {

/// The X keycode, as Linux servers number them, of a virtual key code.
[[nodiscard]] std::optional<uint8_t> keycode(uint32_t virtualKeyCode);

/// The name that the server's keymap gives to the position, at most four characters; null for an
/// unknown code. Servers with keycodes of their own still know the names.
[[nodiscard]] const char *positionName(uint32_t virtualKeyCode);

/// The virtual key code of an X keycode, as Linux servers number them.
[[nodiscard]] std::optional<uint32_t> virtualKeyCode(uint32_t keycode);

} // namespace VirtualKeyMap
} // namespace Velloro
