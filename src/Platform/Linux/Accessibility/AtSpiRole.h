#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Linux/Accessibility/AtSpiStates.h"

#include <cstdint>
#include <optional>

namespace Velloro {

/// Roles of objects on the accessibility bus.
namespace AtSpiRole {

/// The roles that matter here, with their numbers on the bus.
enum Role : uint32_t {
    invalid = 0,
    canvas = 6,
    comboBox = 11,
    drawingArea = 18,
    filler = 20,
    focusTraversable = 21,
    frame = 23,
    glassPane = 24,
    internalFrame = 28,
    label = 29,
    layeredPane = 30,
    optionPane = 36,
    pageTab = 37,
    pageTabList = 38,
    panel = 39,
    passwordText = 40,
    pushButton = 43,
    rootPane = 46,
    scrollPane = 49,
    spinButton = 52,
    splitPane = 53,
    tableCell = 56,
    terminal = 60,
    text = 61,
    toggleButton = 62,
    unknown = 67,
    viewport = 68,
    window = 69,
    application = 75,
    embedded = 78,
    entry = 79,
    caption = 81,
    documentFrame = 82,
    documentText = 94,
    documentWeb = 95,
    documentEmail = 96,
    staticText = 116,
};

/// What an object of this role is; nothing when the role says nothing about whether the object
/// takes text, as of a surface on which an application draws by itself, or of a container that has
/// the focus on behalf of what is in it.
[[nodiscard]] std::optional<AccessibilityRole> accessibilityRole(uint32_t role,
                                                                 const AtSpiStates &states);

/// Whether an object that has the focus is where text goes, which a container of that object, or
/// the current cell of a list beside it, may claim as well.
[[nodiscard]] bool takesText(uint32_t role, const AtSpiStates &states);

} // namespace AtSpiRole
} // namespace Velloro
