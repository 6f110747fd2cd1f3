#include "Platform/Linux/Accessibility/AtSpiRole.h"

namespace Velloro::AtSpiRole {

namespace {

QString textName(bool severalLines)
{
    return severalLines ? QStringLiteral("AXTextArea") : QStringLiteral("AXTextField");
}

} // namespace

QString attributeName(uint32_t role, const AtSpiStates &states)
{
    const bool editable = states.contains(AtSpiStates::editable);
    switch (role) {
    case text:
    case entry:
        // Toolkits give one role to both kinds, and not all of them say that one has a single line.
        return textName(states.contains(AtSpiStates::multiLine));
    case passwordText:
    case spinButton:
        return QStringLiteral("AXTextField");
    case terminal:
        return QStringLiteral("AXTextArea");
    case comboBox:
        return editable ? QStringLiteral("AXComboBox") : QStringLiteral("AXPopUpButton");
    default:
        break;
    }
    // A part of a page or a document that is edited in place can have any other role.
    if (editable)
        return textName(!states.contains(AtSpiStates::singleLine));

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
        return {};
    case label:
    case caption:
    case staticText:
        return QStringLiteral("AXStaticText");
    case pushButton:
    case toggleButton:
        return QStringLiteral("AXButton");
    case checkBox:
        return QStringLiteral("AXCheckBox");
    case radioButton:
        return QStringLiteral("AXRadioButton");
    case slider:
        return QStringLiteral("AXSlider");
    case link:
        return QStringLiteral("AXLink");
    case menu:
        return QStringLiteral("AXMenu");
    case menuItem:
        return QStringLiteral("AXMenuItem");
    case list:
    case listItem:
        return QStringLiteral("AXList");
    case table:
    case tableCell:
        return QStringLiteral("AXTable");
    case tree:
    case treeTable:
        return QStringLiteral("AXOutline");
    case documentFrame:
    case documentText:
    case documentWeb:
    case documentEmail:
        return QStringLiteral("AXWebArea");
    default:
        return QStringLiteral("AXGroup");
    }
}

bool takesText(uint32_t role, const AtSpiStates &states)
{
    return states.contains(AtSpiStates::showing)
        && (states.contains(AtSpiStates::editable) || role == terminal);
}

} // namespace Velloro::AtSpiRole
