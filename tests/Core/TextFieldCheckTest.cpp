#include "Core/Dictation/TextFieldCheck.h"

#include <gtest/gtest.h>

namespace Velloro {
namespace {

TEST(TextFieldCheckTest, RefusesOnlyWhatIsNoTextFieldForSure)
{
    using Role = AccessibilityRole;
    struct Case
    {
        const char *what;
        Accessibility::Result<Role> role;
        bool mayTakeText;
    };
    const Case cases[] = {
        {"text field", Role::textField, true},
        {"text area", Role::textArea, true},
        {"search field", Role::searchField, true},
        {"combo box", Role::comboBox, true},
        {"static text", Role::staticText, true},
        {"button", Role::button, false},
        {"page", Role::webArea, false},
        {"anything else", Role::other, false},
        {"not known", tl::unexpected(AccessibilityError::noValue), true},
        {"no answer", tl::unexpected(AccessibilityError::cannotComplete), true},
    };
    for (const auto &[what, role, mayTakeText] : cases) {
        EXPECT_EQ(TextFieldCheck::mayTakeText({.processIdentifier = 7}, role), mayTakeText) << what;
        EXPECT_TRUE(TextFieldCheck::mayTakeText({7, true}, role)) << what << " in a terminal";
    }
}

} // namespace
} // namespace Velloro
