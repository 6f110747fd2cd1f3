#include "Views/Settings/General/GeneralSettingsViewModel.h"

#include "Base/Log.h"
#include "Views/Shared/StatusText.h"

namespace Velloro {

namespace {

template <typename E>
int indexOf(E value)
{
    const auto cases = allCases<E>();
    return int(std::distance(cases.begin(), std::find(cases.begin(), cases.end(), value)));
}

/// The case at a position in a list of all; nothing for a position outside of it.
template <typename E>
std::optional<E> caseAt(int index)
{
    const auto cases = allCases<E>();
    if (index < 0 || size_t(index) >= cases.size())
        return std::nullopt;
    return cases[size_t(index)];
}

} // namespace

GeneralSettingsViewModel::GeneralSettingsViewModel(AppState &appState, HotkeyManager &hotkeyManager,
                                           KeyEventMonitor &keyEventMonitor,
                                           LoginItem &loginItem, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_loginItem(loginItem)
    , m_hotkey(hotkeyManager, keyEventMonitor)
{
    connect(&appState, &AppState::recordingModeChanged, this,
            &GeneralSettingsViewModel::recordingModeIndexChanged);
    connect(&appState, &AppState::selectedLanguageChanged, this,
            &GeneralSettingsViewModel::languageIndexChanged);
    connect(&appState, &AppState::launchAtLoginChanged, this,
            [this] { setLaunchAtLogin(m_appState.launchAtLogin()); });
}

QStringList GeneralSettingsViewModel::recordingModes()
{
    QStringList modes;
    for (const RecordingMode mode : allCases<RecordingMode>())
        modes << recordingModeText(mode);
    return modes;
}

int GeneralSettingsViewModel::recordingModeIndex() const
{
    return indexOf(m_appState.recordingMode());
}

void GeneralSettingsViewModel::setRecordingModeIndex(int index)
{
    if (const auto mode = caseAt<RecordingMode>(index))
        m_appState.setRecordingMode(*mode);
}

QStringList GeneralSettingsViewModel::languages()
{
    QStringList languages;
    for (const WhisperLanguage language : allCases<WhisperLanguage>()) {
        const auto languageHint = hint(language);
        languages << (languageHint
                          ? QStringLiteral("%1 (%2)").arg(displayName(language), *languageHint)
                          : displayName(language));
    }
    return languages;
}

int GeneralSettingsViewModel::languageIndex() const
{
    return indexOf(m_appState.selectedLanguage());
}

void GeneralSettingsViewModel::setLanguageIndex(int index)
{
    if (const auto language = caseAt<WhisperLanguage>(index))
        m_appState.setSelectedLanguage(*language);
}

void GeneralSettingsViewModel::setLaunchAtLogin(bool enabled)
{
    const LoginItem::Result result
        = enabled ? m_loginItem.registerItem() : m_loginItem.unregisterItem();
    if (!result)
        Log::line(u"Failed to set launch at login: "_qs + result.error().localizedDescription);
}

} // namespace Velloro
