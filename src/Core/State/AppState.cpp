#include "Core/State/AppState.h"

#include "Base/Graphemes.h"
#include "Base/Log.h"
#include "Base/StringLiterals.h"

namespace Velloro {

namespace {

const QString historyKey = u"velloro.transcriptionHistory"_s;
const QString unreadableHistoryKey = u"velloro.transcriptionHistory.unreadable"_s;

constexpr qsizetype maximumHistoryLength = 50;
/// In user-perceived characters.
constexpr int64_t minimumHistoryTextLength = 2;

QString defaultModelId(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return u"base"_s;
    case ModelPreset::medium:
        return u"small-q8_0"_s;
    case ModelPreset::large:
        return u"small"_s;
    }
    Q_UNREACHABLE();
}

QString boolText(bool value)
{
    return value ? u"true"_s : u"false"_s;
}

} // namespace

AppState::AppState(Platform &platform, const QString &repositoryBaseUrl, QObject *parent)
    : QObject(parent)
    , m_defaults(*platform.userDefaults)
    , m_permissionsManager(platform)
    , m_whisperManager(platform, repositoryBaseUrl)
{
    connect(&m_permissionsManager, &PermissionsManager::microphoneChecked, this,
            &AppState::setHasMicrophonePermission);
    connect(&m_permissionsManager, &PermissionsManager::accessibilityChecked, this,
            &AppState::setHasAccessibilityPermission);
    loadHistory();
    Log::line(u"AppState",
              u"Loaded settings: model=%1, language=%2, streaming=%3, "
              "textCorrection=%4"_s.arg(rawValue(selectedModel()), rawValue(selectedLanguage()),
                                        boolText(enableRealtimeStreaming()),
                                        boolText(enableTextCorrection())));
}

QString AppState::modelId(ModelPreset preset) const
{
    const auto assigned = presetMappings().constFind(rawValue(preset));
    return assigned != presetMappings().cend() ? *assigned : defaultModelId(preset);
}

void AppState::setModelId(const QString &modelId, ModelPreset preset)
{
    StringMap mappings = presetMappings();
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
    // Stored before anybody is told of it.
    saveHistory();
    setLastTranscript(trimmed);
    Q_EMIT transcriptionHistoryChanged();
}

void AppState::clearHistory()
{
    const bool changed = !m_transcriptionHistory.isEmpty();
    m_transcriptionHistory.clear();
    m_unreadableHistory.reset();
    m_defaults.removeValue(unreadableHistoryKey);
    saveHistory();
    // After the save, which may have set a file aside.
    m_defaults.removeKeptCopies();
    if (changed)
        Q_EMIT transcriptionHistoryChanged();
}

void AppState::loadHistory()
{
    const auto stored = m_defaults.get<QByteArray>(historyKey);
    if (const auto history = stored ? decodeHistory(*stored) : std::nullopt)
        m_transcriptionHistory = *history;
    else
        m_unreadableHistory = stored;
}

void AppState::saveHistory()
{
    if (m_unreadableHistory) {
        m_defaults.setValue(unreadableHistoryKey, *m_unreadableHistory);
        m_unreadableHistory.reset();
        Log::line(u"AppState",
                  u"The stored history can't be read and is replaced; it "
                  "is kept as %1"_s.arg(unreadableHistoryKey));
    }
    m_defaults.setValue(historyKey, encodeHistory(m_transcriptionHistory));
}

} // namespace Velloro
