#include "Views/PrivacySettingsModel.h"

namespace Velloro {

PrivacySettingsModel::PrivacySettingsModel(Platform &platform, AppState &appState, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_permissionsManager(platform, appState)
    , m_help(m_permissionsManager, appState)
{
    connect(&appState, &AppState::hasMicrophonePermissionChanged, this,
            &PrivacySettingsModel::hasMicrophonePermissionChanged);
    connect(&appState, &AppState::hasAccessibilityPermissionChanged, this,
            &PrivacySettingsModel::hasAccessibilityPermissionChanged);
}

bool PrivacySettingsModel::hasMicrophonePermission() const
{
    return m_appState.hasMicrophonePermission();
}

bool PrivacySettingsModel::hasAccessibilityPermission() const
{
    return m_appState.hasAccessibilityPermission();
}

void PrivacySettingsModel::enableMicrophone()
{
    m_help.openSettingsPage(SettingsPage::microphone);
}

void PrivacySettingsModel::enableAccessibility()
{
    m_help.openSettingsPage(SettingsPage::accessibility);
}

void PrivacySettingsModel::clearHistory()
{
    m_appState.clearHistory();
}

} // namespace Velloro
