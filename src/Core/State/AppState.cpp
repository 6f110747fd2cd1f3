#include "Core/State/AppState.h"

#include "Base/Graphemes.h"
#include "Base/Log.h"

#include <type_traits>

namespace Velloro {

namespace {

namespace Key {
const QString recordingMode = QStringLiteral("velloro.recordingMode");
const QString selectedModel = QStringLiteral("velloro.selectedModel");
const QString selectedLanguage = QStringLiteral("velloro.selectedLanguage");
const QString playSounds = QStringLiteral("velloro.playSounds");
const QString launchAtLogin = QStringLiteral("velloro.launchAtLogin");
const QString insertAsPlainText = QStringLiteral("velloro.insertAsPlainText");
const QString enableRealtimeStreaming = QStringLiteral("velloro.enableRealtimeStreaming");
const QString enableTextCorrection = QStringLiteral("velloro.enableTextCorrection");
const QString hasCompletedOnboarding = QStringLiteral("velloro.hasCompletedOnboarding");
const QString requireTextFieldFocus = QStringLiteral("velloro.requireTextFieldFocus");
const QString customDictionary = QStringLiteral("velloro.customDictionary");
const QString presetMappings = QStringLiteral("velloro.presetMappings");
const QString downloadedModels = QStringLiteral("velloro.downloadedModels");
const QString transcriptionHistory = QStringLiteral("velloro.transcriptionHistory");
const QString unreadableHistory = QStringLiteral("velloro.transcriptionHistory.unreadable");
} // namespace Key

constexpr qsizetype maximumHistoryLength = 50;
/// In user-perceived characters.
constexpr int64_t minimumHistoryTextLength = 2;

/// Whether the property's value changed with the assignment.
template <typename T>
[[nodiscard]] bool assign(T &property, const T &value)
{
    if (property == value)
        return false;
    property = value;
    return true;
}

QStringList rawValues(const AppState::PresetSet &presets)
{
    QStringList values;
    for (const ModelPreset preset : presets)
        values.append(rawValue(preset));
    return values;
}

/// Assigns and stores the value, changed or not; whether it changed.
template <typename T>
[[nodiscard]] bool store(Platform &platform, const QString &key, T &property, const T &value)
{
    const bool changed = assign(property, value);
    UserDefaults &defaults = *platform.userDefaults;
    if constexpr (std::is_enum_v<T>)
        defaults.setValue(key, rawValue(property));
    else if constexpr (std::is_same_v<T, AppState::PresetSet>)
        defaults.setValue(key, rawValues(property));
    else
        defaults.setValue(key, property);
    return changed;
}

QString defaultModelId(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return QStringLiteral("base");
    case ModelPreset::medium:
        return QStringLiteral("small-q8_0");
    case ModelPreset::large:
        return QStringLiteral("small");
    }
    Q_UNREACHABLE();
}

QString boolText(bool value)
{
    return value ? QStringLiteral("true") : QStringLiteral("false");
}

} // namespace

AppState::AppState(Platform &platform, const QString &repositoryBaseUrl, QObject *parent)
    : QObject(parent)
    , m_platform(platform)
    , m_permissionsManager(platform)
    , m_whisperManager(platform, repositoryBaseUrl)
{
    connect(&m_permissionsManager, &PermissionsManager::microphoneChecked, this,
            &AppState::setHasMicrophonePermission);
    connect(&m_permissionsManager, &PermissionsManager::accessibilityChecked, this,
            &AppState::setHasAccessibilityPermission);
    loadSettings();
    loadHistory();
}

void AppState::setTranscriptionState(TranscriptionState value)
{
    if (assign(m_transcriptionState, value))
        Q_EMIT transcriptionStateChanged();
}

void AppState::setPartialTranscript(const QString &value)
{
    if (assign(m_partialTranscript, value))
        Q_EMIT partialTranscriptChanged();
}

void AppState::setLastTranscript(const QString &value)
{
    if (assign(m_lastTranscript, value))
        Q_EMIT lastTranscriptChanged();
}

void AppState::setRecordingDuration(double value)
{
    if (assign(m_recordingDuration, value))
        Q_EMIT recordingDurationChanged();
}

void AppState::setAudioLevel(float value)
{
    if (assign(m_audioLevel, value))
        Q_EMIT audioLevelChanged();
}

void AppState::setRecordingMode(RecordingMode value)
{
    if (store(m_platform, Key::recordingMode, m_recordingMode, value))
        Q_EMIT recordingModeChanged();
}

void AppState::setSelectedModel(ModelPreset value)
{
    if (store(m_platform, Key::selectedModel, m_selectedModel, value))
        Q_EMIT selectedModelChanged();
}

void AppState::setSelectedLanguage(WhisperLanguage value)
{
    if (store(m_platform, Key::selectedLanguage, m_selectedLanguage, value))
        Q_EMIT selectedLanguageChanged();
}

void AppState::setPlaySounds(bool value)
{
    if (store(m_platform, Key::playSounds, m_playSounds, value))
        Q_EMIT playSoundsChanged();
}

void AppState::setLaunchAtLogin(bool value)
{
    if (store(m_platform, Key::launchAtLogin, m_launchAtLogin, value))
        Q_EMIT launchAtLoginChanged();
}

void AppState::setInsertAsPlainText(bool value)
{
    if (store(m_platform, Key::insertAsPlainText, m_insertAsPlainText, value))
        Q_EMIT insertAsPlainTextChanged();
}

void AppState::setEnableRealtimeStreaming(bool value)
{
    if (store(m_platform, Key::enableRealtimeStreaming, m_enableRealtimeStreaming, value))
        Q_EMIT enableRealtimeStreamingChanged();
}

void AppState::setEnableTextCorrection(bool value)
{
    if (store(m_platform, Key::enableTextCorrection, m_enableTextCorrection, value))
        Q_EMIT enableTextCorrectionChanged();
}

void AppState::setHasCompletedOnboarding(bool value)
{
    if (store(m_platform, Key::hasCompletedOnboarding, m_hasCompletedOnboarding, value))
        Q_EMIT hasCompletedOnboardingChanged();
}

void AppState::setRequireTextFieldFocus(bool value)
{
    if (store(m_platform, Key::requireTextFieldFocus, m_requireTextFieldFocus, value))
        Q_EMIT requireTextFieldFocusChanged();
}

void AppState::setCustomDictionary(const QStringList &value)
{
    if (store(m_platform, Key::customDictionary, m_customDictionary, value))
        Q_EMIT customDictionaryChanged();
}

void AppState::setPresetMappings(const StringMap &value)
{
    if (store(m_platform, Key::presetMappings, m_presetMappings, value))
        Q_EMIT presetMappingsChanged();
}

void AppState::setHasMicrophonePermission(bool value)
{
    if (assign(m_hasMicrophonePermission, value))
        Q_EMIT hasMicrophonePermissionChanged();
}

void AppState::setHasAccessibilityPermission(bool value)
{
    if (assign(m_hasAccessibilityPermission, value))
        Q_EMIT hasAccessibilityPermissionChanged();
}

void AppState::setDownloadedModels(const PresetSet &value)
{
    if (store(m_platform, Key::downloadedModels, m_downloadedModels, value))
        Q_EMIT downloadedModelsChanged();
}

void AppState::setIsDownloadingModel(bool value)
{
    if (assign(m_isDownloadingModel, value))
        Q_EMIT isDownloadingModelChanged();
}

void AppState::setDownloadProgress(double value)
{
    if (assign(m_downloadProgress, value))
        Q_EMIT downloadProgressChanged();
}

QString AppState::modelId(ModelPreset preset) const
{
    const auto assigned = m_presetMappings.constFind(rawValue(preset));
    return assigned != m_presetMappings.cend() ? *assigned : defaultModelId(preset);
}

void AppState::setModelId(const QString &modelId, ModelPreset preset)
{
    StringMap mappings = m_presetMappings;
    mappings.insert(rawValue(preset), modelId);
    setPresetMappings(mappings);
}

void AppState::addToHistory(const QString &text)
{
    const QString trimmed = text.trimmed();
    if (Graphemes::count(trimmed) < minimumHistoryTextLength)
        return;
    m_transcriptionHistory.prepend(TranscriptionHistoryItem::now(trimmed));
    if (m_transcriptionHistory.size() > maximumHistoryLength)
        m_transcriptionHistory.removeLast();
    const bool lastTranscriptChanges = assign(m_lastTranscript, trimmed);
    // Stored before anybody is told of it.
    saveHistory();
    Q_EMIT transcriptionHistoryChanged();
    if (lastTranscriptChanges)
        Q_EMIT lastTranscriptChanged();
}

void AppState::clearHistory()
{
    const bool changed = assign(m_transcriptionHistory, {});
    m_unreadableHistory.reset();
    m_platform.userDefaults->removeValue(Key::unreadableHistory);
    saveHistory();
    // After the save, which may have set a file aside.
    m_platform.userDefaults->removeKeptCopies();
    if (changed)
        Q_EMIT transcriptionHistoryChanged();
}

void AppState::loadSettings()
{
    const UserDefaults &defaults = *m_platform.userDefaults;
    const auto loadCase = [&]<typename E>(const QString &key, void (AppState::*set)(E)) {
        const auto stored = defaults.get<QString>(key);
        if (const auto value = stored ? fromRawValue<E>(*stored) : std::nullopt)
            (this->*set)(*value);
    };
    const auto loadBool = [&](const QString &key, void (AppState::*set)(bool)) {
        if (const auto stored = defaults.get<bool>(key))
            (this->*set)(*stored);
    };

    loadCase(Key::recordingMode, &AppState::setRecordingMode);
    loadCase(Key::selectedModel, &AppState::setSelectedModel);
    loadCase(Key::selectedLanguage, &AppState::setSelectedLanguage);
    loadBool(Key::playSounds, &AppState::setPlaySounds);
    loadBool(Key::launchAtLogin, &AppState::setLaunchAtLogin);
    loadBool(Key::insertAsPlainText, &AppState::setInsertAsPlainText);
    loadBool(Key::enableRealtimeStreaming, &AppState::setEnableRealtimeStreaming);
    loadBool(Key::enableTextCorrection, &AppState::setEnableTextCorrection);
    loadBool(Key::hasCompletedOnboarding, &AppState::setHasCompletedOnboarding);
    if (const auto stored = defaults.get<QStringList>(Key::downloadedModels)) {
        PresetSet presets;
        for (const QString &text : *stored) {
            if (const auto preset = fromRawValue<ModelPreset>(text))
                presets.insert(*preset);
        }
        setDownloadedModels(presets);
    }
    loadBool(Key::requireTextFieldFocus, &AppState::setRequireTextFieldFocus);
    if (const auto stored = defaults.get<QStringList>(Key::customDictionary))
        setCustomDictionary(*stored);
    if (const auto stored = defaults.get<StringMap>(Key::presetMappings))
        setPresetMappings(*stored);

    Log::line(u"AppState",
              QStringLiteral("Loaded settings: model=%1, language=%2, streaming=%3, "
                             "textCorrection=%4")
                  .arg(rawValue(m_selectedModel), rawValue(m_selectedLanguage),
                       boolText(m_enableRealtimeStreaming), boolText(m_enableTextCorrection)));
}

void AppState::loadHistory()
{
    const auto stored = m_platform.userDefaults->get<QByteArray>(Key::transcriptionHistory);
    if (const auto history = stored ? decodeHistory(*stored) : std::nullopt)
        m_transcriptionHistory = *history;
    else
        m_unreadableHistory = stored;
}

void AppState::saveHistory()
{
    if (m_unreadableHistory) {
        m_platform.userDefaults->setValue(Key::unreadableHistory, *m_unreadableHistory);
        m_unreadableHistory.reset();
        Log::line(u"AppState", QStringLiteral("The stored history can't be read and gives way; it "
                                              "is kept as %1")
                                   .arg(Key::unreadableHistory));
    }
    m_platform.userDefaults->setValue(Key::transcriptionHistory,
                                      encodeHistory(m_transcriptionHistory));
}

} // namespace Velloro
