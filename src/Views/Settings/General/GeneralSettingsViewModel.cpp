#include "Views/Settings/General/GeneralSettingsViewModel.h"

#include "Base/StringLiterals.h"
#include "Views/Shared/HotkeyProblem.h"
#include "Views/Shared/StatusText.h"

namespace Velloro {

GeneralSettingsViewModel::GeneralSettingsViewModel(HotkeyManager &hotkeyManager,
                                                   KeyEventMonitor &keyEventMonitor,
                                                   QObject *parent)
    : QObject(parent)
    , m_hotkeyManager(hotkeyManager)
    , m_hotkey(hotkeyManager, keyEventMonitor)
{
    connect(&hotkeyManager, &HotkeyManager::abilitiesChanged, this,
            &GeneralSettingsViewModel::hotkeyLimitsChanged);
}

QString GeneralSettingsViewModel::hotkeyLimits() const
{
    return Velloro::hotkeyLimits(m_hotkeyManager.abilities());
}

QStringList GeneralSettingsViewModel::recordingModes()
{
    QStringList modes;
    for (const RecordingMode mode : allCases<RecordingMode>())
        modes << recordingModeText(mode);
    return modes;
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

} // namespace Velloro
