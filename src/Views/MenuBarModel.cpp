#include "Views/MenuBarModel.h"

#include "Views/EnhancedModelRowModel.h"
#include "Views/HotkeyProblem.h"
#include "Views/StatusText.h"

#include <QTimer>

using namespace std::chrono_literals;

namespace Velloro {

MenuBarModel::MenuBarModel(AppState &appState, HotkeyManager &hotkeyManager, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
{
    for (const ModelPreset preset : allCases<ModelPreset>())
        m_rows << new EnhancedModelRowModel(preset, appState, this);
    connect(&appState, &AppState::transcriptionStateChanged, this, &MenuBarModel::stateTextChanged);
    connect(&appState, &AppState::recordingModeChanged, this,
            &MenuBarModel::recordingModeTextChanged);
    connect(&hotkeyManager, &HotkeyManager::hotkeyDisplayStringChanged, this,
            &MenuBarModel::hotkeyTextChanged);
    connect(&hotkeyManager, &HotkeyManager::registrationStatusChanged, this,
            &MenuBarModel::hotkeyTextChanged);
}

QString MenuBarModel::stateText() const
{
    return statusText(m_appState.transcriptionState());
}

QString MenuBarModel::hotkeyText() const
{
    return HotkeyManager::string(m_hotkeyManager.currentKeyCode(),
                                 m_hotkeyManager.currentModifiers());
}

QString MenuBarModel::hotkeyProblem() const
{
    return Velloro::hotkeyProblem(m_hotkeyManager.registrationStatus(), hotkeyText(),
                                  HotkeyProblemPlace::panel);
}

QString MenuBarModel::recordingModeText() const
{
    return Velloro::recordingModeText(m_appState.recordingMode());
}

void MenuBarModel::openSettings()
{
    Q_EMIT openSettingsRequested();
}

void MenuBarModel::quit()
{
    QTimer::singleShot(100ms, this, &MenuBarModel::quitRequested);
}

void MenuBarModel::close()
{
    Q_EMIT closeRequested();
}

} // namespace Velloro
