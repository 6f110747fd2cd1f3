#include "Platform/Linux/Accessibility/AtSpiRole.h"

namespace Velloro::AtSpiRole {

namespace {

AccessibilityRole textRole(bool severalLines)
{
    return severalLines ? AccessibilityRole::textArea : AccessibilityRole::textField;
}

} // namespace

std::optional<AccessibilityRole> accessibilityRole(uint32_t role, const AtSpiStates &states)
{
    const bool editable = states.contains(AtSpiStates::editable);
    switch (role) {
    case text:
    case entry:
        // Toolkits give one role to both kinds, and not all of them say that one has a single line.
        return textRole(states.contains(AtSpiStates::multiLine));
    case passwordText:
    case spinButton:
        return AccessibilityRole::textField;
    case terminal:
        return AccessibilityRole::textArea;
    case comboBox:
        return editable ? AccessibilityRole::comboBox : AccessibilityRole::other;
    default:
        break;
    }
    // A part of a page or a document that is edited in place can have any other role.
    if (editable)
        return textRole(!states.contains(AtSpiStates::singleLine));

    switch (role) {
    case invalid:
    case unknown:
    case canvas:
    case drawingArea:
    case embedded:
    case filler:
    case focusTraversable:
    case frame:
    case glassPane:
    case internalFrame:
    case layeredPane:
    case optionPane:
    case pageTab:
    case pageTabList:
    case panel:
    case rootPane:
    case scrollPane:
    case splitPane:
    case viewport:
    case window:
    case application:
        return std::nullopt;
    case label:
    case caption:
    case staticText:
        return AccessibilityRole::staticText;
    case pushButton:
    case toggleButton:
        return AccessibilityRole::button;
    case documentFrame:
    case documentText:
    case documentWeb:
    case documentEmail:
        return AccessibilityRole::webArea;
    default:
        return AccessibilityRole::other;
    }
}

bool takesText(uint32_t role, const AtSpiStates &states)
{
    return states.contains(AtSpiStates::showing)
        && (states.contains(AtSpiStates::editable) || role == terminal);
}

} // namespace Velloro::AtSpiRole
