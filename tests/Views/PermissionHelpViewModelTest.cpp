#include "Views/Settings/Privacy/PermissionHelpViewModel.h"

#include "Support/InMemoryPlatform.h"
#include "Support/WaitUntil.h"

#include <QSignalSpy>
#include <gmock/gmock.h>

namespace Velloro {

namespace {

class PermissionHelpViewModelTest : public ::testing::Test
{
protected:
    InMemoryPlatform memory;
    AppState appState{memory.platform};
    PermissionHelpViewModel help{appState};
};

TEST_F(PermissionHelpViewModelTest, LeadsToTheDesktopsPages)
{
    help.enableMicrophone();
    help.enableAccessibility();
    EXPECT_THAT(memory.systemSettings->asked,
                ::testing::ElementsAre(SettingsPage::microphone, SettingsPage::accessibility));
    EXPECT_FALSE(help.isOpen());
}

TEST_F(PermissionHelpViewModelTest, HelpsWhereTheDesktopHasNoPage)
{
    memory.systemSettings->hasPages = false;
    QSignalSpy changes(&help, &PermissionHelpViewModel::changed);
    help.enableMicrophone();
    EXPECT_TRUE(help.isOpen());
    EXPECT_EQ(help.title(), u"Microphone");
    EXPECT_EQ(changes.count(), 1);
    help.act();
    ASSERT_TRUE(waitUntil([&] { return help.isGranted(); }));
    EXPECT_TRUE(appState.hasMicrophonePermission());

    help.enableAccessibility();
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
