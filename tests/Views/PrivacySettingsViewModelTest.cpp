#include "Views/Settings/Privacy/PrivacySettingsViewModel.h"

#include "Base/StringLiterals.h"
#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class PrivacySettingsViewModelTest : public ::testing::Test
{
protected:
    InMemoryPlatform memory;
    AppState appState{memory.platform};
    PrivacySettingsViewModel model{appState};
};

TEST_F(PrivacySettingsViewModelTest, ShowsTheFlagsAndLeadsToTheDesktopsPages)
{
    EXPECT_FALSE(model.hasMicrophonePermission());
    QSignalSpy microphone(&model, &PrivacySettingsViewModel::hasMicrophonePermissionChanged);
    appState.setHasMicrophonePermission(true);
    EXPECT_EQ(microphone.count(), 1);
    EXPECT_TRUE(model.hasMicrophonePermission());
    EXPECT_FALSE(model.hasAccessibilityPermission());

    model.enableMicrophone();
    model.enableAccessibility();
    EXPECT_THAT(memory.systemSettings->asked,
                ::testing::ElementsAre(SettingsPage::microphone, SettingsPage::accessibility));
    EXPECT_FALSE(model.help()->isOpen());

    appState.addToHistory(u"some words"_s);
    model.clearHistory();
    EXPECT_TRUE(appState.transcriptionHistory().isEmpty());
    model.clearHistory();
}

TEST_F(PrivacySettingsViewModelTest, HelpsWhereTheDesktopHasNoPage)
{
    memory.systemSettings->hasPages = false;
    PermissionHelpViewModel &help = *model.help();
    QSignalSpy changes(&help, &PermissionHelpViewModel::changed);
    model.enableMicrophone();
    EXPECT_TRUE(help.isOpen());
    EXPECT_EQ(help.title(), u"Microphone");
    EXPECT_EQ(changes.count(), 1);
    help.act();
    ASSERT_TRUE(waitUntil([&] { return help.isGranted(); }));
    EXPECT_TRUE(appState.hasMicrophonePermission());

    model.enableAccessibility();
    EXPECT_EQ(help.title(), u"Accessibility");
    EXPECT_FALSE(help.isGranted());
    help.act();
    memory.accessibility->trusted = false;
    QSignalSpy granted(&appState, &AppState::hasAccessibilityPermissionChanged);
    EXPECT_FALSE(granted.wait(1300)) << "the first look finds it off";
    memory.accessibility->trusted = true;
    ASSERT_TRUE(granted.wait());
    EXPECT_TRUE(help.isGranted());
    help.close();
    EXPECT_FALSE(help.isOpen());
}

} // namespace
} // namespace Velloro
