#include "Views/Settings/SettingsViewModel.h"

namespace Velloro {

SettingsViewModel::SettingsViewModel(Platform &platform, AppState &appState,
                                     HotkeyManager &hotkeyManager, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_general(hotkeyManager, *platform.keyEventMonitor)
    , m_models(appState)
    , m_dictionary(appState)
    , m_history(appState, *platform.pasteboard)
    , m_permissionHelp(appState)
{
}

} // namespace Velloro
