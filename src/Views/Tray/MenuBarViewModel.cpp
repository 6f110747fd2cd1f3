#include "Views/Tray/MenuBarViewModel.h"

#include "Views/Tray/EnhancedModelRowViewModel.h"
#include "Views/Shared/HotkeyProblem.h"
#include "Views/Shared/StatusText.h"

#include <QTimer>

using namespace std::chrono_literals;

namespace Velloro {

MenuBarViewModel::MenuBarViewModel(AppState &appState, HotkeyManager &hotkeyManager, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
{
    for (const ModelPreset preset : allCases<ModelPreset>())
        m_rows << new EnhancedModelRowViewModel(preset, appState, this);
    connect(&appState, &AppState::transcriptionStateChanged, this, &MenuBarViewModel::stateTextChanged);
    connect(&appState, &AppState::recordingModeChanged, this,
            &MenuBarViewModel::recordingModeTextChanged);
    connect(&hotkeyManager, &HotkeyManager::hotkeyDisplayStringChanged, this,
            &MenuBarViewModel::hotkeyTextChanged);
    connect(&hotkeyManager, &HotkeyManager::registrationStatusChanged, this,
            &MenuBarViewModel::hotkeyTextChanged);
}

QString MenuBarViewModel::stateText() const
{
    return statusText(m_appState.transcriptionState());
}

QString MenuBarViewModel::hotkeyText() const
{
    return HotkeyManager::string(m_hotkeyManager.currentKeyCode(),
                                 m_hotkeyManager.currentModifiers());
}

QString MenuBarViewModel::hotkeyProblem() const
{
    return Velloro::hotkeyProblem(m_hotkeyManager.registrationStatus(), hotkeyText(),
                                  HotkeyProblemPlace::panel);
}

QString MenuBarViewModel::recordingModeText() const
{
    return Velloro::recordingModeText(m_appState.recordingMode());
}

void MenuBarViewModel::openSettings()
{
    Q_EMIT openSettingsRequested();
}

void MenuBarViewModel::quit()
{
    QTimer::singleShot(100ms, this, &MenuBarViewModel::quitRequested);
}

void MenuBarViewModel::close()
{
    Q_EMIT closeRequested();
}

} // namespace Velloro
