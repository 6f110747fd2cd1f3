#pragma once

#include "Core/Domain/DomainTypes.h"
#include "Managers/PermissionsManager.h"
#include "Managers/WhisperManager.h"
#include "Platform/Platform.h"

#include <QMap>
#include <QObject>
#include <QStringList>
#include <set>

namespace Velloro {

/// Everything that the user interface shows and everything that the user can set. Main thread only.
///
/// Exactly one exists; it owns the model manager and the permissions manager. Settings and history are read at construction.
/// Every assignment of a persisted property is stored before it returns, an unchanged value too;
/// observers are told only when the value changes.
class AppState : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString partialTranscript READ partialTranscript WRITE setPartialTranscript NOTIFY partialTranscriptChanged)
    Q_PROPERTY(QString lastTranscript READ lastTranscript WRITE setLastTranscript NOTIFY lastTranscriptChanged)
    Q_PROPERTY(double recordingDuration READ recordingDuration WRITE setRecordingDuration NOTIFY recordingDurationChanged)
    Q_PROPERTY(float audioLevel READ audioLevel WRITE setAudioLevel NOTIFY audioLevelChanged)
    Q_PROPERTY(bool playSounds READ playSounds WRITE setPlaySounds NOTIFY playSoundsChanged)
    Q_PROPERTY(bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(bool insertAsPlainText READ insertAsPlainText WRITE setInsertAsPlainText NOTIFY insertAsPlainTextChanged)
    Q_PROPERTY(bool enableRealtimeStreaming READ enableRealtimeStreaming WRITE setEnableRealtimeStreaming NOTIFY enableRealtimeStreamingChanged)
    Q_PROPERTY(bool enableTextCorrection READ enableTextCorrection WRITE setEnableTextCorrection NOTIFY enableTextCorrectionChanged)
    Q_PROPERTY(bool hasCompletedOnboarding READ hasCompletedOnboarding WRITE setHasCompletedOnboarding NOTIFY hasCompletedOnboardingChanged)
    Q_PROPERTY(bool requireTextFieldFocus READ requireTextFieldFocus WRITE setRequireTextFieldFocus NOTIFY requireTextFieldFocusChanged)
    Q_PROPERTY(QStringList customDictionary READ customDictionary WRITE setCustomDictionary NOTIFY customDictionaryChanged)
    Q_PROPERTY(bool hasMicrophonePermission READ hasMicrophonePermission WRITE setHasMicrophonePermission NOTIFY hasMicrophonePermissionChanged)
    Q_PROPERTY(bool hasAccessibilityPermission READ hasAccessibilityPermission WRITE setHasAccessibilityPermission NOTIFY hasAccessibilityPermissionChanged)
    Q_PROPERTY(bool isDownloadingModel READ isDownloadingModel WRITE setIsDownloadingModel NOTIFY isDownloadingModelChanged)
    Q_PROPERTY(double downloadProgress READ downloadProgress WRITE setDownloadProgress NOTIFY downloadProgressChanged)

public:
    using StringMap = QMap<QString, QString>;
    using PresetSet = std::set<ModelPreset>;

    /// `platform` outlives the state. `repositoryBaseUrl` is handed to the model manager.
    explicit AppState(Platform &platform,
                      const QString &repositoryBaseUrl = ModelCatalog::repositoryBaseUrl(),
                      QObject *parent = nullptr);

    [[nodiscard]] TranscriptionState transcriptionState() const { return m_transcriptionState; }
    void setTranscriptionState(TranscriptionState value);
    /// The text shown live while streaming; empty outside a recording.
    [[nodiscard]] const QString &partialTranscript() const { return m_partialTranscript; }
    void setPartialTranscript(const QString &value);
    /// The most recent final text.
    [[nodiscard]] const QString &lastTranscript() const { return m_lastTranscript; }
    void setLastTranscript(const QString &value);
    /// Seconds.
    [[nodiscard]] double recordingDuration() const { return m_recordingDuration; }
    void setRecordingDuration(double value);
    /// 0 to 1.
    [[nodiscard]] float audioLevel() const { return m_audioLevel; }
    void setAudioLevel(float value);
    [[nodiscard]] RecordingMode recordingMode() const { return m_recordingMode; }
    void setRecordingMode(RecordingMode value);
    [[nodiscard]] ModelPreset selectedModel() const { return m_selectedModel; }
    void setSelectedModel(ModelPreset value);
    [[nodiscard]] WhisperLanguage selectedLanguage() const { return m_selectedLanguage; }
    void setSelectedLanguage(WhisperLanguage value);
    [[nodiscard]] bool playSounds() const { return m_playSounds; }
    void setPlaySounds(bool value);
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin; }
    void setLaunchAtLogin(bool value);
    [[nodiscard]] bool insertAsPlainText() const { return m_insertAsPlainText; }
    void setInsertAsPlainText(bool value);
    [[nodiscard]] bool enableRealtimeStreaming() const { return m_enableRealtimeStreaming; }
    void setEnableRealtimeStreaming(bool value);
    [[nodiscard]] bool enableTextCorrection() const { return m_enableTextCorrection; }
    void setEnableTextCorrection(bool value);
    [[nodiscard]] bool hasCompletedOnboarding() const { return m_hasCompletedOnboarding; }
    void setHasCompletedOnboarding(bool value);
    [[nodiscard]] bool requireTextFieldFocus() const { return m_requireTextFieldFocus; }
    void setRequireTextFieldFocus(bool value);
    /// Words that recognition is biased to, as they were entered.
    [[nodiscard]] const QStringList &customDictionary() const { return m_customDictionary; }
    void setCustomDictionary(const QStringList &value);
    /// Preset raw value to catalogue id.
    [[nodiscard]] const StringMap &presetMappings() const { return m_presetMappings; }
    void setPresetMappings(const StringMap &value);
    [[nodiscard]] bool hasMicrophonePermission() const { return m_hasMicrophonePermission; }
    void setHasMicrophonePermission(bool value);
    [[nodiscard]] bool hasAccessibilityPermission() const { return m_hasAccessibilityPermission; }
    void setHasAccessibilityPermission(bool value);
    /// The presets that have a model file, as last computed.
    [[nodiscard]] const PresetSet &downloadedModels() const { return m_downloadedModels; }
    void setDownloadedModels(const PresetSet &value);
    /// Whether the first-run flow downloads its model.
    [[nodiscard]] bool isDownloadingModel() const { return m_isDownloadingModel; }
    void setIsDownloadingModel(bool value);
    /// 0 to 1.
    [[nodiscard]] double downloadProgress() const { return m_downloadProgress; }
    void setDownloadProgress(double value);

    /// The model manager, made with the state and never replaced.
    [[nodiscard]] WhisperManager &whisperManager() { return m_whisperManager; }
    /// What checks and requests the permissions; the flags follow its reports.
    [[nodiscard]] PermissionsManager &permissionsManager() { return m_permissionsManager; }

    /// Finished transcripts, newest first, at most 50.
    [[nodiscard]] const QList<TranscriptionHistoryItem> &transcriptionHistory() const
    {
        return m_transcriptionHistory;
    }

    /// The catalogue id assigned to a preset: the user's choice, else the preset's default.
    [[nodiscard]] QString modelId(ModelPreset preset) const;
    /// Assigns a catalogue id to a preset and stores the whole map.
    void setModelId(const QString &modelId, ModelPreset preset);
    /// Records a finished transcript, trimmed, unless fewer than 2 characters remain.
    void addToHistory(const QString &text);
    /// Removes all history entries, stores the empty list, and has what the settings' store kept of
    /// earlier contents removed as well.
    void clearHistory();

Q_SIGNALS:
    void transcriptionStateChanged();
    void partialTranscriptChanged();
    void lastTranscriptChanged();
    void recordingDurationChanged();
    void audioLevelChanged();
    void recordingModeChanged();
    void selectedModelChanged();
    void selectedLanguageChanged();
    void playSoundsChanged();
    void launchAtLoginChanged();
    void insertAsPlainTextChanged();
    void enableRealtimeStreamingChanged();
    void enableTextCorrectionChanged();
    void hasCompletedOnboardingChanged();
    void requireTextFieldFocusChanged();
    void customDictionaryChanged();
    void presetMappingsChanged();
    void hasMicrophonePermissionChanged();
    void hasAccessibilityPermissionChanged();
    void downloadedModelsChanged();
    void isDownloadingModelChanged();
    void downloadProgressChanged();
    void transcriptionHistoryChanged();

private:
    void loadSettings();
    void loadHistory();
    void saveHistory();

    Platform &m_platform;
    TranscriptionState m_transcriptionState = TranscriptionState::idle;
    QString m_partialTranscript;
    QString m_lastTranscript;
    double m_recordingDuration = 0;
    float m_audioLevel = 0;
    RecordingMode m_recordingMode = RecordingMode::holdToTalk;
    ModelPreset m_selectedModel = ModelPreset::medium;
    WhisperLanguage m_selectedLanguage = WhisperLanguage::english;
    bool m_playSounds = true;
    bool m_launchAtLogin = false;
    bool m_insertAsPlainText = true;
    bool m_enableRealtimeStreaming = false;
    bool m_enableTextCorrection = true;
    bool m_hasCompletedOnboarding = false;
    bool m_requireTextFieldFocus = true;
    QStringList m_customDictionary;
    StringMap m_presetMappings;
    bool m_hasMicrophonePermission = false;
    bool m_hasAccessibilityPermission = false;
    PermissionsManager m_permissionsManager;
    WhisperManager m_whisperManager;
    PresetSet m_downloadedModels;
    bool m_isDownloadingModel = false;
    double m_downloadProgress = 0;
    QList<TranscriptionHistoryItem> m_transcriptionHistory;
    /// A stored history that can't be read and has not been replaced yet.
    std::optional<QByteArray> m_unreadableHistory;
};

} // namespace Velloro
