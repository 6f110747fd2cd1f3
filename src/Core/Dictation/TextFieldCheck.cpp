#include "Core/Dictation/TextFieldCheck.h"

namespace Velloro {

bool TextFieldCheck::mayTakeText(const RunningApplication &application,
                                 const Accessibility::Result<AccessibilityRole> &role)
{
    if (application.isKnownToTakeText || !role)
        return true;
    switch (*role) {
    case AccessibilityRole::textField:
    case AccessibilityRole::textArea:
    case AccessibilityRole::searchField:
    case AccessibilityRole::comboBox:
    case AccessibilityRole::staticText:
        return true;
    case AccessibilityRole::webArea:
    case AccessibilityRole::button:
    case AccessibilityRole::other:
        return false;
    }
    return true;
}

} // namespace Velloro
