#pragma once

#include "Core/Domain/DomainTypes.h"
#include "Core/State/Property.h"
#include "Core/State/Setting.h"
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
/// Exactly one exists; it owns the model manager and the permissions manager. Settings and history
/// are read at construction. Every assignment of a persisted property is stored before it returns,
/// an unchanged value too; observers are told only when the value changes.
class AppState : public QObject
{
    Q_OBJECT
    // What the views read and write themselves.
    Q_PROPERTY(Velloro::RecordingMode recordingMode READ recordingMode WRITE setRecordingMode NOTIFY
                   recordingModeChanged)
    Q_PROPERTY(Velloro::WhisperLanguage selectedLanguage READ selectedLanguage WRITE
                   setSelectedLanguage NOTIFY selectedLanguageChanged)
    Q_PROPERTY(bool playSounds READ playSounds WRITE setPlaySounds NOTIFY playSoundsChanged)
    Q_PROPERTY(
        bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY launchAtLoginChanged)
    Q_PROPERTY(bool insertAsPlainText READ insertAsPlainText WRITE setInsertAsPlainText NOTIFY
                   insertAsPlainTextChanged)
    Q_PROPERTY(bool enableRealtimeStreaming READ enableRealtimeStreaming WRITE
                   setEnableRealtimeStreaming NOTIFY enableRealtimeStreamingChanged)
    Q_PROPERTY(bool enableTextCorrection READ enableTextCorrection WRITE setEnableTextCorrection
                   NOTIFY enableTextCorrectionChanged)
    Q_PROPERTY(bool requireTextFieldFocus READ requireTextFieldFocus WRITE setRequireTextFieldFocus
                   NOTIFY requireTextFieldFocusChanged)
    Q_PROPERTY(bool hasMicrophonePermission READ hasMicrophonePermission NOTIFY
                   hasMicrophonePermissionChanged)
    Q_PROPERTY(bool hasAccessibilityPermission READ hasAccessibilityPermission NOTIFY
                   hasAccessibilityPermissionChanged)
    Q_PROPERTY(bool isDownloadingModel READ isDownloadingModel NOTIFY isDownloadingModelChanged)
    Q_PROPERTY(double downloadProgress READ downloadProgress NOTIFY downloadProgressChanged)

public:
    using StringMap = QMap<QString, QString>;
    using PresetSet = std::set<ModelPreset>;

    /// `platform` outlives the state. `repositoryBaseUrl` is handed to the model manager.
    explicit AppState(Platform &platform,
                      const QString &repositoryBaseUrl = ModelCatalog::repositoryBaseUrl(),
                      QObject *parent = nullptr);

    [[nodiscard]] TranscriptionState transcriptionState() const
    {
        return m_transcriptionState.get();
    }
    void setTranscriptionState(TranscriptionState value) { m_transcriptionState.set(value); }
    /// The text shown live while streaming; empty outside a recording.
    [[nodiscard]] const QString &partialTranscript() const { return m_partialTranscript.get(); }
    void setPartialTranscript(const QString &value) { m_partialTranscript.set(value); }
    /// The most recent final text.
    [[nodiscard]] const QString &lastTranscript() const { return m_lastTranscript.get(); }
    void setLastTranscript(const QString &value) { m_lastTranscript.set(value); }
    /// Seconds.
    [[nodiscard]] double recordingDuration() const { return m_recordingDuration.get(); }
    void setRecordingDuration(double value) { m_recordingDuration.set(value); }
    /// 0 to 1.
    [[nodiscard]] float audioLevel() const { return m_audioLevel.get(); }
    void setAudioLevel(float value) { m_audioLevel.set(value); }
    [[nodiscard]] bool hasMicrophonePermission() const { return m_hasMicrophonePermission.get(); }
    void setHasMicrophonePermission(bool value) { m_hasMicrophonePermission.set(value); }
    [[nodiscard]] bool hasAccessibilityPermission() const
    {
        return m_hasAccessibilityPermission.get();
    }
    void setHasAccessibilityPermission(bool value) { m_hasAccessibilityPermission.set(value); }
    /// Whether the first-run flow downloads its model.
    [[nodiscard]] bool isDownloadingModel() const { return m_isDownloadingModel.get(); }
    void setIsDownloadingModel(bool value) { m_isDownloadingModel.set(value); }
    /// 0 to 1.
    [[nodiscard]] double downloadProgress() const { return m_downloadProgress.get(); }
    void setDownloadProgress(double value) { m_downloadProgress.set(value); }

    [[nodiscard]] RecordingMode recordingMode() const { return m_recordingMode.get(); }
    void setRecordingMode(RecordingMode value) { m_recordingMode.set(value); }
    [[nodiscard]] ModelPreset selectedModel() const { return m_selectedModel.get(); }
    void setSelectedModel(ModelPreset value) { m_selectedModel.set(value); }
    [[nodiscard]] WhisperLanguage selectedLanguage() const { return m_selectedLanguage.get(); }
    void setSelectedLanguage(WhisperLanguage value) { m_selectedLanguage.set(value); }
    [[nodiscard]] bool playSounds() const { return m_playSounds.get(); }
    void setPlaySounds(bool value) { m_playSounds.set(value); }
    [[nodiscard]] bool launchAtLogin() const { return m_launchAtLogin.get(); }
    void setLaunchAtLogin(bool value) { m_launchAtLogin.set(value); }
    [[nodiscard]] bool insertAsPlainText() const { return m_insertAsPlainText.get(); }
    void setInsertAsPlainText(bool value) { m_insertAsPlainText.set(value); }
    [[nodiscard]] bool enableRealtimeStreaming() const { return m_enableRealtimeStreaming.get(); }
    void setEnableRealtimeStreaming(bool value) { m_enableRealtimeStreaming.set(value); }
    [[nodiscard]] bool enableTextCorrection() const { return m_enableTextCorrection.get(); }
    void setEnableTextCorrection(bool value) { m_enableTextCorrection.set(value); }
    [[nodiscard]] bool hasCompletedOnboarding() const { return m_hasCompletedOnboarding.get(); }
    void setHasCompletedOnboarding(bool value) { m_hasCompletedOnboarding.set(value); }
    /// The presets that have a model file, as last computed.
    [[nodiscard]] const PresetSet &downloadedModels() const { return m_downloadedModels.get(); }
    void setDownloadedModels(const PresetSet &value) { m_downloadedModels.set(value); }
    [[nodiscard]] bool requireTextFieldFocus() const { return m_requireTextFieldFocus.get(); }
    void setRequireTextFieldFocus(bool value) { m_requireTextFieldFocus.set(value); }
    /// Words that recognition is biased to, as they were entered.
    [[nodiscard]] const QStringList &customDictionary() const { return m_customDictionary.get(); }
    void setCustomDictionary(const QStringList &value) { m_customDictionary.set(value); }
    /// Preset raw value to catalogue id.
    [[nodiscard]] const StringMap &presetMappings() const { return m_presetMappings.get(); }
    void setPresetMappings(const StringMap &value) { m_presetMappings.set(value); }

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
    Q_INVOKABLE void clearHistory();

Q_SIGNALS:
    void transcriptionStateChanged();
    void partialTranscriptChanged();
    void lastTranscriptChanged();
    void recordingDurationChanged();
    void audioLevelChanged();
    void hasMicrophonePermissionChanged();
    void hasAccessibilityPermissionChanged();
    void isDownloadingModelChanged();
    void downloadProgressChanged();
    void recordingModeChanged();
    void selectedModelChanged();
    void selectedLanguageChanged();
    void playSoundsChanged();
    void launchAtLoginChanged();
    void insertAsPlainTextChanged();
    void enableRealtimeStreamingChanged();
    void enableTextCorrectionChanged();
    void hasCompletedOnboardingChanged();
    void downloadedModelsChanged();
    void requireTextFieldFocusChanged();
    void customDictionaryChanged();
    void presetMappingsChanged();
    void transcriptionHistoryChanged();

private:
    template <typename T>
    using Property = Velloro::Property<AppState, T>;
    template <typename T>
    using Setting = Velloro::Setting<AppState, T>;

    void loadHistory();
    void saveHistory();

    UserDefaults &m_defaults;
    Property<TranscriptionState> m_transcriptionState{this, &AppState::transcriptionStateChanged,
                                                      TranscriptionState::idle};
    Property<QString> m_partialTranscript{this, &AppState::partialTranscriptChanged};
    Property<QString> m_lastTranscript{this, &AppState::lastTranscriptChanged};
    Property<double> m_recordingDuration{this, &AppState::recordingDurationChanged};
    Property<float> m_audioLevel{this, &AppState::audioLevelChanged};
    Property<bool> m_hasMicrophonePermission{this, &AppState::hasMicrophonePermissionChanged};
    Property<bool> m_hasAccessibilityPermission{this, &AppState::hasAccessibilityPermissionChanged};
    Property<bool> m_isDownloadingModel{this, &AppState::isDownloadingModelChanged};
    Property<double> m_downloadProgress{this, &AppState::downloadProgressChanged};

    // The settings, in the order in which they are read.
    Setting<RecordingMode> m_recordingMode{this, &AppState::recordingModeChanged, m_defaults,
                                           u"velloro.recordingMode", RecordingMode::holdToTalk};
    Setting<ModelPreset> m_selectedModel{this, &AppState::selectedModelChanged, m_defaults,
                                         u"velloro.selectedModel", ModelPreset::medium};
    Setting<WhisperLanguage> m_selectedLanguage{this, &AppState::selectedLanguageChanged,
                                                m_defaults, u"velloro.selectedLanguage",
                                                WhisperLanguage::english};
    Setting<bool> m_playSounds{this, &AppState::playSoundsChanged, m_defaults,
                               u"velloro.playSounds", true};
    Setting<bool> m_launchAtLogin{this, &AppState::launchAtLoginChanged, m_defaults,
                                  u"velloro.launchAtLogin", false};
    Setting<bool> m_insertAsPlainText{this, &AppState::insertAsPlainTextChanged, m_defaults,
                                      u"velloro.insertAsPlainText", true};
    Setting<bool> m_enableRealtimeStreaming{this, &AppState::enableRealtimeStreamingChanged,
                                            m_defaults, u"velloro.enableRealtimeStreaming", false};
    Setting<bool> m_enableTextCorrection{this, &AppState::enableTextCorrectionChanged, m_defaults,
                                         u"velloro.enableTextCorrection", true};
    Setting<bool> m_hasCompletedOnboarding{this, &AppState::hasCompletedOnboardingChanged,
                                           m_defaults, u"velloro.hasCompletedOnboarding", false};
    Setting<PresetSet> m_downloadedModels{this, &AppState::downloadedModelsChanged, m_defaults,
                                          u"velloro.downloadedModels"};
    Setting<bool> m_requireTextFieldFocus{this, &AppState::requireTextFieldFocusChanged, m_defaults,
                                          u"velloro.requireTextFieldFocus", true};
    Setting<QStringList> m_customDictionary{this, &AppState::customDictionaryChanged, m_defaults,
                                            u"velloro.customDictionary"};
    Setting<StringMap> m_presetMappings{this, &AppState::presetMappingsChanged, m_defaults,
                                        u"velloro.presetMappings"};

    PermissionsManager m_permissionsManager;
    WhisperManager m_whisperManager;
    QList<TranscriptionHistoryItem> m_transcriptionHistory;
    /// A stored history that can't be read and has not been replaced yet.
    std::optional<QByteArray> m_unreadableHistory;
};

} // namespace Velloro
