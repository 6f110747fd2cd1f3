#pragma once

#include <cstdint>

namespace Velloro {

/// The modifiers in the flags of key events; other bits may be set there.
namespace EventFlag {
inline constexpr uint32_t shift = 0x20000, control = 0x40000, option = 0x80000, command = 0x100000;
} // namespace EventFlag

/// The modifiers in the classic masks, which hotkeys are told and stored with.
namespace ClassicMask {
inline constexpr uint32_t command = 256, shift = 512, option = 2048, control = 4096;
} // namespace ClassicMask

} // namespace Velloro
