#include "Core/Dictation/DictationController.h"

#include "Base/Log.h"
#include "Base/StringLiterals.h"
#include "Core/Dictation/TextFieldCheck.h"
#include "Core/Recognition/ModelFile.h"
#include "Managers/TextCorrector.h"

#include <QCoroFuture>
#include <QScopeGuard>
#include <utility>

using namespace std::chrono_literals;

namespace Velloro {

namespace {

constexpr auto recordingTick = 50ms;
constexpr auto pauseAfterDeletion = 50ms;

void log(const QString &message)
{
    Log::line(u"Dictation", message);
}

} // namespace

class DictationController::Start
{
public:
    explicit Start(DictationController &controller)
        : m_controller(&controller)
    {
        ++controller.m_startsUnderWay;
    }
    ~Start()
    {
        if (!m_controller)
            return;
        --m_controller->m_startsUnderWay;
        m_controller->announceIdle();
    }
    Start(const Start &) = delete;
    Start &operator=(const Start &) = delete;

private:
    QPointer<DictationController> m_controller;
};

DictationController::DictationController(AppState &appState, Platform &platform,
                                         HotkeyManager &hotkeyManager, PillFactory makePill,
                                         QObject *parent)
    : QObject(parent)
    , m_appState(appState)
    , m_platform(platform)
    , m_audioCaptureManager(platform)
    , m_textInsertionManager(platform)
    , m_streamedText(m_textInsertionManager)
    , m_hotkeyManager(hotkeyManager)
    , m_notices(*platform.userNotifications)
    , m_makePill(std::move(makePill))
{
    // Coarse, which at 50 ms is exact on average and fires together with the capture's own timer.
    m_recordingTimer.setInterval(recordingTick);
    connect(&m_recordingTimer, &QTimer::timeout, this, [this] {
        m_appState.setRecordingDuration(m_appState.recordingDuration() + 0.05);
        m_audioCaptureManager.refresh();
        m_appState.setAudioLevel(m_audioCaptureManager.audioLevel());
    });
    // A microphone that vanishes ends the dictation with what was said until then.
    connect(&m_audioCaptureManager, &AudioCaptureManager::captureInterrupted, this,
            &DictationController::stopRecording);
    connect(platform.screenLock.get(), &ScreenLock::locked, this,
            &DictationController::stopRecording);
    setupHotkeyHandlers();
}

DictationController::~DictationController() = default;

void DictationController::setupHotkeyHandlers()
{
    const QPointer<DictationController> controller(this);
    m_hotkeyManager.setOnHotkeyPressed([controller] {
        if (controller)
            controller->handleHotkeyPressed();
    });
    m_hotkeyManager.setOnHotkeyReleased([controller] {
        if (controller)
            controller->handleHotkeyReleased();
    });
    m_hotkeyManager.setOnHotkeyToggled([controller] {
        if (controller)
            controller->handleHotkeyToggled();
    });
    connect(&m_hotkeyManager, &HotkeyManager::pressedWhilePaused, this, [this] {
        m_notices.tell(DictationNotices::Cause::hotkeyTaken, m_hotkeyManager.hotkeyDisplayString());
    });
}

void DictationController::handleHotkeyPressed()
{
    if (m_appState.recordingMode() == RecordingMode::toggle
        && m_appState.transcriptionState() == TranscriptionState::listening) {
        stopRecording();
    } else {
        startRecording();
    }
}

void DictationController::handleHotkeyReleased()
{
    if (m_appState.recordingMode() == RecordingMode::holdToTalk
        && m_appState.transcriptionState() == TranscriptionState::listening) {
        stopRecording();
    }
}

void DictationController::handleHotkeyToggled()
{
    // No release will end it: in hold mode, too, the next press does.
    if (m_appState.transcriptionState() == TranscriptionState::listening)
        stopRecording();
    else
        startRecording();
}

void DictationController::startRecording()
{
    if (!hasKeyboard()) {
        tellWhoHasKeyboard();
        return;
    }
    if (!m_appState.hasMicrophonePermission()) {
        log(u"Microphone permission not granted, requesting..."_s);
        requestPermissionAndStart();
        return;
    }
    if (m_appState.requireTextFieldFocus() && !isTextFieldFocused()) {
        showTextFieldNotification();
        return;
    }
    startRecordingInternal();
}

QCoro::Task<void> DictationController::requestPermissionAndStart()
{
    const QPointer<DictationController> alive(this);
    const Start start(*this);
    const bool granted = co_await m_audioCaptureManager.requestPermission();
    if (!alive)
        co_return;
    m_appState.setHasMicrophonePermission(granted);
    if (!granted) {
        log(u"Permission denied by user"_s);
        m_notices.tell(DictationNotices::Cause::microphoneRefused);
        co_return;
    }
    log(u"Permission granted, starting recording..."_s);
    co_await startRecordingInternal();
}

QCoro::Task<void> DictationController::startRecordingInternal()
{
    const QPointer<DictationController> alive(this);
    const Start start(*this);

    for (;;) {
        if (m_appState.transcriptionState() != TranscriptionState::idle) {
            log(u"Cannot start recording: already recording (state: %1)"_s.arg(
                caseName(m_appState.transcriptionState())));
            co_return;
        }
        if (m_appState.whisperManager().isModelLoaded())
            break;
        const bool loaded = co_await loadModelJustInTime();
        if (!alive || !loaded)
            co_return;
    }

    // Presses that waited for the same model come here together; one of them starts.
    if (std::exchange(m_isStarting, true))
        co_return;
    const auto endOfStart = qScopeGuard([alive] {
        if (alive)
            alive->m_isStarting = false;
    });

    // The screen may have been locked while the model was loaded.
    if (m_platform.screenLock->isLocked()) {
        tellWhoHasKeyboard();
        co_return;
    }

    const bool streaming = m_appState.enableRealtimeStreaming();
    m_streamedText.clear();
    m_confirmedText.clear();
    m_isStreamingActive = streaming;
    ++m_recordingNumber;
    m_appState.setPartialTranscript({});

    m_preparedContext.reset();
    co_await prepareContext();
    if (!alive)
        co_return;

    AudioCaptureManager::StartResult started;
    if (streaming) {
        started = co_await startStreamingCapture();
        if (!alive)
            co_return;
    } else {
        started = m_audioCaptureManager.startRecording();
    }
    if (!started) {
        const QString reason = localizedDescription(started.error());
        log(u"Failed to start recording: "_s + reason);
        m_notices.tell(DictationNotices::Cause::microphoneFailed, reason);
        co_return;
    }
    log(streaming ? u"Started recording with realtime streaming"_s
                  : u"Started recording in batch mode"_s);

    m_textInsertionManager.prepare();
    m_appState.setTranscriptionState(TranscriptionState::listening);
    showRecordingPill();
    startRecordingTimer();
    if (m_appState.playSounds())
        m_platform.systemSounds->play(u"Pop"_s);
    // Locked since the check above: nobody would stop it.
    if (m_platform.screenLock->isLocked())
        stopRecording();
}

QCoro::Task<bool> DictationController::loadModelJustInTime()
{
    log(u"Model not loaded, attempting to load selected model..."_s);
    const QPointer<DictationController> alive(this);
    WhisperManager &manager = m_appState.whisperManager();
    for (;;) {
        const auto awaited = co_await manager.finishLoading();
        if (!alive)
            co_return false;
        if (manager.isModelLoaded()) {
            log(u"Successfully loaded model JIT"_s);
            co_return true;
        }
        const WhisperModelType type = modelType(m_appState.selectedModel());
        if (!manager.isModelDownloaded(type)) {
            if (awaited && !*awaited) {
                reportFailedLoad(awaited->error());
            } else {
                log(u"Cannot start recording: model not downloaded."_s);
                tellOfMissingModel();
            }
            co_return false;
        }
        const auto loaded = co_await manager.loadModel(type);
        if (!alive)
            co_return false;
        // A model that the user has chosen meanwhile is as good.
        if (!loaded && !manager.isModelLoaded() && manager.loadingModelId().isEmpty()) {
            reportFailedLoad(loaded.error());
            co_return false;
        }
    }
}

QCoro::Task<std::shared_ptr<WhisperContext>> DictationController::prepareContext()
{
    const QPointer<DictationController> alive(this);
    // Another model may be chosen while this waits.
    std::shared_ptr<WhisperContext> context = m_appState.whisperManager().whisperContext();
    while (context && context != m_preparedContext.lock()) {
        co_await context->setLanguage(rawValue(m_appState.selectedLanguage()));
        if (!alive)
            co_return std::shared_ptr<WhisperContext>();
        co_await context->setCustomDictionary(m_appState.customDictionary());
        if (!alive)
            co_return std::shared_ptr<WhisperContext>();
        m_preparedContext = context;
        context = m_appState.whisperManager().whisperContext();
    }
    co_return context;
}

QCoro::Task<AudioCaptureManager::StartResult> DictationController::startStreamingCapture()
{
    // The callbacks are made elsewhere: GCC 12 destroys a closure twice that a coroutine makes in
    // the midst of a statement.
    const QPointer<DictationController> alive(this);
    const TranscriptionCallback onSegment = segmentHandler();
    const QString language = rawValue(m_appState.selectedLanguage());
    co_await m_appState.whisperManager().startStreaming(language, onSegment);
    if (!alive)
        co_return AudioCaptureManager::StartResult();
    co_return m_audioCaptureManager.startRecordingWithAsyncStreaming(chunkHandler());
}

TranscriptionCallback DictationController::segmentHandler()
{
    // A context that was replaced during a recording may deliver its last segment in the next one.
    return [controller = QPointer<DictationController>(this),
            recording = m_recordingNumber](const TranscriptionSegment &segment) {
        if (controller && controller->m_recordingNumber == recording)
            controller->handleTranscriptionSegment(segment);
    };
}

AudioCaptureManager::AsyncChunkHandler DictationController::chunkHandler()
{
    return [controller = QPointer<DictationController>(this)](std::vector<float> chunk) {
        return feedContext(controller, std::move(chunk));
    };
}

QCoro::Task<void> DictationController::feedContext(QPointer<DictationController> controller,
                                                   std::vector<float> chunk)
{
    if (!controller)
        co_return;
    if (const auto context = controller->m_appState.whisperManager().whisperContext())
        co_await context->addAudioSamples(std::move(chunk));
}

void DictationController::stopRecording()
{
    if (m_appState.transcriptionState() != TranscriptionState::listening)
        return;
    const bool wasStreaming = m_isStreamingActive;
    m_isStreamingActive = false;
    m_recordingTimer.stop();

    std::vector<float> samples = m_audioCaptureManager.stopRecording();
    log(u"Stopped recording, got %1 samples. Mode: %2"_s.arg(
        QString::number(samples.size()), wasStreaming ? u"streaming"_s : u"batch"_s));
    if (wasStreaming) {
        // Runs on the executor ahead of the transcription; nothing here depends on its end.
        if (const auto context = m_appState.whisperManager().whisperContext())
            context->stopStreaming();
    }
    m_appState.setTranscriptionState(TranscriptionState::transcribing);
    transcribeAndFinish(std::move(samples));
}

QCoro::Task<void> DictationController::transcribeAndFinish(std::vector<float> samples)
{
    const QPointer<DictationController> alive(this);
    const WhisperContext::TranscriptionResult heard = co_await transcribe(std::move(samples));
    if (alive)
        finish(heard);
}

QCoro::Task<WhisperContext::TranscriptionResult>
DictationController::transcribe(std::vector<float> samples)
{
    const QPointer<DictationController> alive(this);
    WhisperContext::TranscriptionResult heard = tl::unexpected(WhisperContextError::notReady);
    WhisperManager &manager = m_appState.whisperManager();
    co_await manager.finishLoading();
    if (!alive)
        co_return heard;
    // A model was chosen during the recording and can't be loaded: the one before serves again.
    if (manager.whisperContext() && !manager.isModelLoaded()) {
        co_await manager.loadModel(manager.selectedModelId());
        if (!alive)
            co_return heard;
    }
    const std::shared_ptr<WhisperContext> context = co_await prepareContext();
    if (!context)
        co_return heard;
    const QFuture<WhisperContext::TranscriptionResult> transcription
        = context->transcribe(std::move(samples));
    co_await qCoro(transcription).waitForFinished();
    if (transcription.resultCount() > 0)
        heard = transcription.result();
    co_return heard;
}

void DictationController::finish(const WhisperContext::TranscriptionResult &heard)
{
    const bool isTyped = hasKeyboard();
    if (heard && isTyped)
        deleteStreamedText();
    if (heard && !heard->isEmpty())
        insertFinalText(*heard, isTyped);
    else
        log(u"Empty final transcription"_s);
    // What was certain while streaming is then all that there is of the recording.
    if (!heard) {
        m_appState.addToHistory(m_confirmedText);
        m_notices.tell(DictationNotices::Cause::notRecognised, localizedDescription(heard.error()));
    }
    m_textInsertionManager.finish();

    m_appState.setTranscriptionState(TranscriptionState::idle);
    m_appState.setPartialTranscript({});
    m_streamedText.clear();
    m_confirmedText.clear();
    hideRecordingPill();
    if (m_appState.playSounds())
        m_platform.systemSounds->play(u"Tink"_s);
    announceIdle();
}

bool DictationController::isBusy() const
{
    return m_startsUnderWay > 0 || m_appState.transcriptionState() != TranscriptionState::idle;
}

void DictationController::announceIdle()
{
    if (!isBusy())
        Q_EMIT becameIdle();
}

void DictationController::deleteStreamedText()
{
    const int64_t count = m_streamedText.removableCount();
    if (count < 1)
        return;
    log(u"Deleting %1 characters of streaming text"_s.arg(count));
    m_textInsertionManager.deleteBackwards(count);
    m_platform.keyboardEvents->pause(pauseAfterDeletion);
}

void DictationController::insertFinalText(const QString &text, bool isTyped)
{
    QString final = text;
    if (m_appState.enableTextCorrection()) {
        final = TextCorrector::correct(text, rawValue(m_appState.selectedLanguage()));
        if (final != text)
            log(u"Text corrected: '"_s + text + u"' -> '"_s + final + u"'"_s);
    }
    if (isTyped) {
        m_textInsertionManager.insertText(final);
        if (m_textInsertionManager.wasLastPasteRefused()) {
            log(u"Keeping the transcription in the history: another program keeps the clipboard"_s);
            m_notices.tell(DictationNotices::Cause::wordsNotPasted);
        } else if (m_textInsertionManager.wasLastTextLeftToPaste()) {
            log(u"Leaving the transcription on the clipboard: no paste stroke could be sent"_s);
            m_notices.tell(DictationNotices::Cause::wordsLeftToPaste);
        }
    } else {
        log(u"Keeping the transcription in the history: its field has lost the keyboard"_s);
        m_notices.tell(DictationNotices::Cause::wordsKept);
    }
    m_appState.setLastTranscript(final);
    m_appState.addToHistory(final);
    log(u"Final transcription: '"_s + final + u"'"_s);
}

bool DictationController::isTextFieldFocused()
{
    const auto application = m_platform.workspace->frontmostApplication();
    if (!application)
        return true;
    Accessibility &accessibility = *m_platform.accessibility;
    const auto role = accessibility.focusedElementOf(application->processIdentifier)
                          .and_then([&](const AccessibilityElementRef &element) {
                              return accessibility.role(element);
                          });
    return TextFieldCheck::mayTakeText(*application, role);
}

void DictationController::showTextFieldNotification()
{
    m_platform.userNotifications->deliver(
        u"Velloro"_s,
        u"Please click on a text field before recording. You can disable this check in Settings."_s);
    log(u"Text field not focused, showing notification"_s);
}

void DictationController::reportFailedLoad(const ModelLoadError &error)
{
    const QString reason = localizedDescription(error);
    log(u"Failed to load model JIT: "_s + reason);
    if (isPresetModelDamaged()) {
        m_notices.tell(DictationNotices::Cause::modelDamaged, rawValue(m_appState.selectedModel()));
    } else {
        m_notices.tell(DictationNotices::Cause::modelLoadFailed, reason);
    }
}

void DictationController::tellOfMissingModel()
{
    const ModelPreset preset = m_appState.selectedModel();
    const ModelDownloadState state
        = m_appState.whisperManager().modelStates().value(m_appState.modelId(preset));
    if (std::holds_alternative<ModelDownloadState::Downloading>(state.value))
        m_notices.tell(DictationNotices::Cause::modelOnItsWay);
    else if (isPresetModelDamaged())
        m_notices.tell(DictationNotices::Cause::modelDamaged, rawValue(preset));
    else
        m_notices.tell(DictationNotices::Cause::modelMissing, rawValue(preset));
}

bool DictationController::isPresetModelDamaged() const
{
    const WhisperManager &manager = m_appState.whisperManager();
    const QString id = m_appState.modelId(m_appState.selectedModel());
    if (!manager.isModelFilePresent(id))
        return false;
    const QString path = manager.modelURL(id);
    return ModelFile::isForeign(path) || ModelFile::isDamaged(path);
}

bool DictationController::hasKeyboard()
{
    return !m_platform.screenLock->isLocked() && !m_platform.screenLock->isKeyboardTaken();
}

void DictationController::tellWhoHasKeyboard()
{
    if (m_platform.screenLock->isLocked()) {
        log(u"Cannot start recording: the screen is locked"_s);
        return;
    }
    log(u"Cannot start recording: another program has taken the keyboard"_s);
    m_notices.tell(DictationNotices::Cause::keyboardTaken);
}

void DictationController::showRecordingPill()
{
    if (!m_pillWindowController)
        m_pillWindowController = m_makePill();
    m_pillWindowController->show(m_appState);
}

void DictationController::hideRecordingPill()
{
    if (m_pillWindowController)
        m_pillWindowController->hide();
}

void DictationController::startRecordingTimer()
{
    m_appState.setRecordingDuration(0);
    m_recordingTimer.start();
}

void DictationController::handleTranscriptionSegment(const TranscriptionSegment &segment)
{
    if (!m_isStreamingActive)
        return;
    const QString confirmed = segment.text.trimmed();
    const QString uncommitted = segment.uncommitted.trimmed();
    QStringList shown{confirmed, uncommitted};
    shown.removeAll(QString());
    m_appState.setPartialTranscript(shown.join(u' '));

    // What can't be typed now comes with a later segment.
    m_confirmedText = confirmed;
    if (!confirmed.isEmpty() && hasKeyboard())
        m_streamedText.type(confirmed);
}

void DictationController::updatePermissionStatus()
{
    m_appState.permissionsManager().check();
}

void DictationController::updateAppStateFromWhisperManager()
{
    AppState::PresetSet downloaded;
    for (const WhisperModelType type : allCases<WhisperModelType>()) {
        if (!m_appState.whisperManager().isModelDownloaded(type))
            continue;
        QString name = modelId(type);
        name[0] = name[0].toUpper();
        if (const auto preset = fromRawValue<ModelPreset>(name))
            downloaded.insert(*preset);
    }
    m_appState.setDownloadedModels(downloaded);
}

void DictationController::loadSelectedModelIfNeeded()
{
    const WhisperModelType type = modelType(m_appState.selectedModel());
    if (m_appState.whisperManager().isModelDownloaded(type))
        m_appState.whisperManager().loadModel(type);
}

WhisperModelType DictationController::modelType(ModelPreset preset)
{
    switch (preset) {
    case ModelPreset::small:
        return WhisperModelType::base;
    case ModelPreset::medium:
        return WhisperModelType::small;
    case ModelPreset::large:
        return WhisperModelType::medium;
    }
    Q_UNREACHABLE();
}

} // namespace Velloro
