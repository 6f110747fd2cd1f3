#include "Views/Settings/General/GeneralSettingsViewModel.h"

#include "Base/StringLiterals.h"
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
                                                   QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_hotkey(hotkeyManager, keyEventMonitor)
{
    connect(&appState, &AppState::recordingModeChanged, this,
            &GeneralSettingsViewModel::recordingModeIndexChanged);
    connect(&appState, &AppState::selectedLanguageChanged, this,
            &GeneralSettingsViewModel::languageIndexChanged);
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
        languages << (languageHint ? u"%1 (%2)"_s.arg(displayName(language), *languageHint)
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

} // namespace Velloro
