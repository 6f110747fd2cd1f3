#include "Views/GeneralSettingsModel.h"

#include "Core/Log.h"
#include "Views/StatusText.h"

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

GeneralSettingsModel::GeneralSettingsModel(AppState &appState, HotkeyManager &hotkeyManager,
                                           KeyEventMonitor &keyEventMonitor,
                                           LoginItem &loginItem, QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_loginItem(loginItem)
    , m_hotkey(hotkeyManager, keyEventMonitor)
{
    connect(&appState, &AppState::recordingModeChanged, this,
            &GeneralSettingsModel::recordingModeIndexChanged);
    connect(&appState, &AppState::selectedLanguageChanged, this,
            &GeneralSettingsModel::languageIndexChanged);
    connect(&appState, &AppState::launchAtLoginChanged, this,
            [this] { setLaunchAtLogin(m_appState.launchAtLogin()); });
}

QStringList GeneralSettingsModel::recordingModes()
{
    QStringList modes;
    for (const RecordingMode mode : allCases<RecordingMode>())
        modes << recordingModeText(mode);
    return modes;
}

int GeneralSettingsModel::recordingModeIndex() const
{
    return indexOf(m_appState.recordingMode());
}

void GeneralSettingsModel::setRecordingModeIndex(int index)
{
    if (const auto mode = caseAt<RecordingMode>(index))
        m_appState.setRecordingMode(*mode);
}

QStringList GeneralSettingsModel::languages()
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

int GeneralSettingsModel::languageIndex() const
{
    return indexOf(m_appState.selectedLanguage());
}

void GeneralSettingsModel::setLanguageIndex(int index)
{
    if (const auto language = caseAt<WhisperLanguage>(index))
        m_appState.setSelectedLanguage(*language);
}

void GeneralSettingsModel::setLaunchAtLogin(bool enabled)
{
    const LoginItem::Result result
        = enabled ? m_loginItem.registerItem() : m_loginItem.unregisterItem();
    if (!result)
        Log::line(u"Failed to set launch at login: "_qs + result.error().localizedDescription);
}

} // namespace Velloro
