#include "Platform/Linux/X11/Keyboard/VirtualKeyMap.h"

#include <algorithm>
#include <iterator>

namespace Velloro::VirtualKeyMap {

namespace {

struct Position
{
    uint8_t virtualKeyCode;
    uint8_t keycode;
    const char *name;
};

// The keycodes are those of the kernel's input events plus 8.
constexpr Position positions[] = {
    // Letters
    {0, 38, "AC01"},
    {1, 39, "AC02"},
    {2, 40, "AC03"},
    {3, 41, "AC04"},
    {4, 43, "AC06"},
    {5, 42, "AC05"},
    {6, 52, "AB01"},
    {7, 53, "AB02"},
    {8, 54, "AB03"},
    {9, 55, "AB04"},
    {11, 56, "AB05"},
    {12, 24, "AD01"},
    {13, 25, "AD02"},
    {14, 26, "AD03"},
    {15, 27, "AD04"},
    {16, 29, "AD06"},
    {17, 28, "AD05"},
    {31, 32, "AD09"},
    {32, 30, "AD07"},
    {34, 31, "AD08"},
    {35, 33, "AD10"},
    {37, 46, "AC09"},
    {38, 44, "AC07"},
    {40, 45, "AC08"},
    {45, 57, "AB06"},
    {46, 58, "AB07"},
    // Digits
    {18, 10, "AE01"},
    {19, 11, "AE02"},
    {20, 12, "AE03"},
    {21, 13, "AE04"},
    {23, 14, "AE05"},
    {22, 15, "AE06"},
    {26, 16, "AE07"},
    {28, 17, "AE08"},
    {25, 18, "AE09"},
    {29, 19, "AE10"},
    // Punctuation, and the keys of ISO and JIS keyboards
    {10, 94, "LSGT"},
    {24, 21, "AE12"},
    {27, 20, "AE11"},
    {30, 35, "AD12"},
    {33, 34, "AD11"},
    {39, 48, "AC11"},
    {41, 47, "AC10"},
    {42, 51, "BKSL"},
    {43, 59, "AB08"},
    {44, 61, "AB10"},
    {47, 60, "AB09"},
    {50, 49, "TLDE"},
    {93, 132, "AE13"},
    {94, 97, "AB11"},
    {102, 102, "MUHE"},
    {104, 100, "HENK"},
    // White space, editing and navigation
    {36, 36, "RTRN"},
    {48, 23, "TAB"},
    {49, 65, "SPCE"},
    {51, 22, "BKSP"},
    {53, 9, "ESC"},
    {110, 135, "COMP"},
    {114, 118, "INS"},
    {115, 110, "HOME"},
    {116, 112, "PGUP"},
    {117, 119, "DELE"},
    {119, 115, "END"},
    {121, 117, "PGDN"},
    {123, 113, "LEFT"},
    {124, 114, "RGHT"},
    {125, 116, "DOWN"},
    {126, 111, "UP"},
    // Modifiers
    {54, 134, "RWIN"},
    {55, 133, "LWIN"},
    {56, 50, "LFSH"},
    {57, 66, "CAPS"},
    {58, 64, "LALT"},
    {59, 37, "LCTL"},
    {60, 62, "RTSH"},
    {61, 108, "RALT"},
    {62, 105, "RCTL"},
    // Function keys
    {122, 67, "FK01"},
    {120, 68, "FK02"},
    {99, 69, "FK03"},
    {118, 70, "FK04"},
    {96, 71, "FK05"},
    {97, 72, "FK06"},
    {98, 73, "FK07"},
    {100, 74, "FK08"},
    {101, 75, "FK09"},
    {109, 76, "FK10"},
    {103, 95, "FK11"},
    {111, 96, "FK12"},
    {105, 191, "FK13"},
    {107, 192, "FK14"},
    {113, 193, "FK15"},
    {106, 194, "FK16"},
    {64, 195, "FK17"},
    {79, 196, "FK18"},
    {80, 197, "FK19"},
    {90, 198, "FK20"},
    {72, 123, "VOL+"},
    {73, 122, "VOL-"},
    {74, 121, "MUTE"},
    // Keypad
    {65, 91, "KPDL"},
    {67, 63, "KPMU"},
    {69, 86, "KPAD"},
    {71, 77, "NMLK"},
    {75, 106, "KPDV"},
    {76, 104, "KPEN"},
    {78, 82, "KPSU"},
    {81, 125, "KPEQ"},
    {82, 90, "KP0"},
    {83, 87, "KP1"},
    {84, 88, "KP2"},
    {85, 89, "KP3"},
    {86, 83, "KP4"},
    {87, 84, "KP5"},
    {88, 85, "KP6"},
    {89, 79, "KP7"},
    {91, 80, "KP8"},
    {92, 81, "KP9"},
};

const Position *positionOf(uint32_t virtualKeyCode)
{
    const auto found = std::ranges::find(positions, virtualKeyCode, &Position::virtualKeyCode);
    return found == std::end(positions) ? nullptr : found;
}

} // namespace

std::optional<uint8_t> keycode(uint32_t virtualKeyCode)
{
    if (const Position *position = positionOf(virtualKeyCode))
        return position->keycode;
    return std::nullopt;
}

const char *positionName(uint32_t virtualKeyCode)
{
    const Position *position = positionOf(virtualKeyCode);
    return position ? position->name : nullptr;
}

std::optional<uint32_t> virtualKeyCode(uint32_t keycode)
{
    const auto found = std::ranges::find(positions, keycode, &Position::keycode);
    if (found == std::end(positions))
        return std::nullopt;
    return found->virtualKeyCode;
}

} // namespace Velloro::VirtualKeyMap
