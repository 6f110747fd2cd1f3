#include "Views/Settings/Privacy/PrivacySettingsViewModel.h"

namespace Velloro {

PrivacySettingsViewModel::PrivacySettingsViewModel(AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_help(appState)
{
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this,
            &PrivacySettingsViewModel::hasMicrophonePermissionChanged);
    connect(&appState, &AppState::hasAccessibilityPermissionChanged, this,
            &PrivacySettingsViewModel::hasAccessibilityPermissionChanged);
}

bool PrivacySettingsViewModel::hasMicrophonePermission() const
{
    return m_appState.hasMicrophonePermission();
}

bool PrivacySettingsViewModel::hasAccessibilityPermission() const
{
    return m_appState.hasAccessibilityPermission();
}

void PrivacySettingsViewModel::enableMicrophone()
{
    m_help.openSettingsPage(SettingsPage::microphone);
}

void PrivacySettingsViewModel::enableAccessibility()
{
    m_help.openSettingsPage(SettingsPage::accessibility);
}

void PrivacySettingsViewModel::clearHistory()
{
    m_appState.clearHistory();
}

} // namespace Velloro
