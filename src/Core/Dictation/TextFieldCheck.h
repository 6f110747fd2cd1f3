#pragma once

#include "Platform/Accessibility.h"
#include "Platform/Workspace.h"

namespace Velloro {

/// Judges by what is known of the element that has the focus whether text can be dictated into it.
class TextFieldCheck
{
public:
    /// False only for what is positively no text field: an element of which nothing is known, and
    /// any of an application that is known to take text, may be one.
    [[nodiscard]] static bool mayTakeText(const RunningApplication &application,
                                          const Accessibility::Result<AccessibilityRole> &role);
};

} // namespace Velloro
