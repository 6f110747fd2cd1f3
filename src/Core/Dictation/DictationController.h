#pragma once

#include "Core/Dictation/DictationNotices.h"
#include "Core/Dictation/RecordingPill.h"
#include "Core/Dictation/StreamedText.h"
#include "Core/State/AppState.h"
#include "Managers/AudioCaptureManager.h"
#include "Managers/HotkeyManager.h"
#include "Managers/TextInsertionManager.h"

#include <QCoroTask>
#include <QObject>
#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>

namespace Velloro {

/// Turns hotkey presses into dictations: checks what a recording needs, drives microphone, pill and
/// timer, has the audio transcribed, cleans the text, types it and records it in the history.
///
/// Main thread only. Asynchronous steps resume there; while they are suspended hotkey events are
/// handled normally. The checks of `AppState::transcriptionState` guard against overlapping
/// dictations, and between the check and the microphone's start `m_isStarting` does. A press while
/// a model is being loaded waits for that load; only when none is under way the controller starts
/// one.
class DictationController : public QObject
{
    Q_OBJECT

public:
    using PillFactory = std::function<std::unique_ptr<RecordingPill>()>;

    /// Wires the callbacks of `hotkeyManager`; registering the hotkey is the caller's.
    /// `appState`, `platform` and the hotkey manager outlive the controller. `makePill` is called
    /// once, when the first recording starts.
    DictationController(AppState &appState, Platform &platform, HotkeyManager &hotkeyManager,
                        PillFactory makePill, QObject *parent = nullptr);
    ~DictationController() override;

    /// Requests a dictation; may be refused, with a log line and a notification.
    void startRecording();
    /// Ends the recording and has its text produced; ignored unless the state is `listening`. A
    /// locked screen ends it as well: the text goes to the history alone then.
    void stopRecording();
    /// Refreshes the two permission flags of the state.
    void updatePermissionStatus();
    /// Recomputes the presets that have a model file from the files on disk.
    void updateAppStateFromWhisperManager();
    /// Loads the selected preset's model in the background if its file exists.
    void loadSelectedModelIfNeeded();
    /// Types what a segment has newly confirmed and shows the rest; ignored unless a streaming
    /// recording runs.
    void handleTranscriptionSegment(const TranscriptionSegment &segment);

    /// The model type that a preset stands for on the paths that load a model here.
    [[nodiscard]] static WhisperModelType modelType(ModelPreset preset);

    [[nodiscard]] HotkeyManager &hotkeyManager() { return m_hotkeyManager; }

    /// From a press until it has been refused, or until its dictation has ended. Meanwhile nobody
    /// but the user replaces the model.
    [[nodiscard]] bool isBusy() const;

Q_SIGNALS:
    /// A dictation or a refused press has come to its end, and nothing else is under way.
    void becameIdle();

private:
    /// Keeps the controller busy for as long as it lives.
    class Start;

    void setupHotkeyHandlers();
    void handleHotkeyPressed();
    void handleHotkeyReleased();
    void handleHotkeyToggled();
    QCoro::Task<void> requestPermissionAndStart();
    QCoro::Task<void> startRecordingInternal();
    /// Has a model loaded; whether one is.
    QCoro::Task<bool> loadModelJustInTime();
    /// Gives the current context language and dictionary, unless it has this recording's already.
    /// The context that has them; null when there is none.
    QCoro::Task<std::shared_ptr<WhisperContext>> prepareContext();
    QCoro::Task<AudioCaptureManager::StartResult> startStreamingCapture();
    [[nodiscard]] TranscriptionCallback segmentHandler();
    [[nodiscard]] AudioCaptureManager::AsyncChunkHandler chunkHandler();
    static QCoro::Task<void> feedContext(QPointer<DictationController> controller,
                                         std::vector<float> chunk);
    QCoro::Task<void> transcribeAndFinish(std::vector<float> samples);
    QCoro::Task<WhisperContext::TranscriptionResult> transcribe(std::vector<float> samples);
    void finish(const WhisperContext::TranscriptionResult &heard);
    void announceIdle();
    void deleteStreamedText();
    /// Types the text unless `isTyped` is false, and records it.
    void insertFinalText(const QString &text, bool isTyped);
    [[nodiscard]] bool isTextFieldFocused();
    void showTextFieldNotification();
    void reportFailedLoad(const ModelLoadError &error);
    void tellOfMissingModel();
    /// Whether the file of the selected preset's model is there and holds no model. Reads it.
    [[nodiscard]] bool isPresetModelDamaged() const;
    /// Whether what is typed reaches the window in front, not a screen locker or the like.
    [[nodiscard]] bool hasKeyboard();
    void tellWhoHasKeyboard();
    void showRecordingPill();
    void hideRecordingPill();
    void startRecordingTimer();

    AppState &m_appState;
    Platform &m_platform;
    AudioCaptureManager m_audioCaptureManager;
    TextInsertionManager m_textInsertionManager;
    StreamedText m_streamedText;
    HotkeyManager &m_hotkeyManager;
    DictationNotices m_notices;
    PillFactory m_makePill;
    std::unique_ptr<RecordingPill> m_pillWindowController;
    /// 0.05 s tick while recording.
    QTimer m_recordingTimer;
    bool m_isStreamingActive = false;
    /// What a streaming recognition is certain of.
    QString m_confirmedText;
    /// A recording is about to begin.
    bool m_isStarting = false;
    int m_startsUnderWay = 0;
    /// The context that has been given language and dictionary for the recording.
    std::weak_ptr<WhisperContext> m_preparedContext;
    /// Counts the recordings, so that a segment of an earlier one is recognised.
    uint64_t m_recordingNumber = 0;
};

} // namespace Velloro
