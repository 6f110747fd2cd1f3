#include "Views/Tray/MenuBarViewModel.h"

#include "Base/StringLiterals.h"
#include "Views/Shared/HotkeyProblem.h"
#include "Views/Shared/StatusText.h"

#include <QTimer>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

const QString hasToldOfMissingTray = u"velloro.hasToldOfMissingTray"_s;

} // namespace

MenuBarViewModel::MenuBarViewModel(Platform &platform, AppState &appState,
                                   HotkeyManager &hotkeyManager, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_appState(appState)
    , m_hotkeyManager(hotkeyManager)
{
    for (const ModelPreset preset : allCases<ModelPreset>())
        m_rows << new EnhancedModelRowViewModel(preset, appState, this);
    connect(&appState, &AppState::transcriptionStateChanged, this,
            &MenuBarViewModel::stateTextChanged);
    connect(&appState, &AppState::recordingModeChanged, this,
            &MenuBarViewModel::recordingModeTextChanged);
    connect(&hotkeyManager, &HotkeyManager::hotkeyDisplayStringChanged, this,
            &MenuBarViewModel::hotkeyTextChanged);
    connect(&hotkeyManager, &HotkeyManager::registrationStatusChanged, this,
            &MenuBarViewModel::hotkeyTextChanged);
}

void MenuBarViewModel::tellOfMissingTray()
{
    UserDefaults &defaults = *m_platform.userDefaults;
    if (defaults.get<bool>(hasToldOfMissingTray).value_or(false))
        return;
    m_platform.userNotifications->deliver(
        tr("Velloro is running"),
        tr("This desktop has no tray for its icon. Start Velloro again to open its panel."),
        [&defaults] { defaults.setValue(hasToldOfMissingTray, true); });
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
