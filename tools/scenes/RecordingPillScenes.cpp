#include "Scene.h"

#include "Views/Pill/RecordingPillWindowController.h"

namespace Velloro {

namespace {

QImage pill(Stage &stage, TranscriptionState state, const QString &streamed = {})
{
    stage.appState.setEnableRealtimeStreaming(!streamed.isNull());
    stage.appState.setPartialTranscript(streamed);
    stage.appState.setRecordingDuration(83.4);
    stage.appState.setAudioLevel(0.5F);
    stage.appState.setTranscriptionState(state);
    RecordingPillWindowController controller(stage.engine, *stage.memory.platform.screenFrames);
    controller.show(stage.appState);
    return controller.window() ? Stage::picture(*controller.window()) : QImage();
}

} // namespace

QList<Scene> recordingPillScenes()
{
    const QString longText = QStringLiteral("The quick brown fox jumps over the lazy dog and runs");
    return {
        {QStringLiteral("pill-idle"),
         [](Stage &stage) { return pill(stage, TranscriptionState::idle); }},
        {QStringLiteral("pill-listening"),
         [](Stage &stage) { return pill(stage, TranscriptionState::listening); }},
        {QStringLiteral("pill-transcribing"),
         [](Stage &stage) { return pill(stage, TranscriptionState::transcribing); }},
        {QStringLiteral("pill-inserting"),
         [](Stage &stage) { return pill(stage, TranscriptionState::inserting); }},
        {QStringLiteral("pill-streaming-empty"),
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening, QStringLiteral(""));
         }},
        {QStringLiteral("pill-streaming"),
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening, QStringLiteral("hello wor"));
         }},
        {QStringLiteral("pill-streaming-long"),
         [longText](Stage &stage) {
             return pill(stage, TranscriptionState::listening, longText);
         }},
        {QStringLiteral("pill-streaming-transcribing"),
         [longText](Stage &stage) {
             return pill(stage, TranscriptionState::transcribing, longText);
         }},
        {QStringLiteral("pill-streaming-long-word"),
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening,
                         QStringLiteral("Donaudampfschifffahrtsgesellschaftskapitän"));
         }},
        {QStringLiteral("pill-streaming-right-to-left"),
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening,
                         QStringLiteral("هذا نص يُكتب من اليمين إلى اليسار"));
         }},
        {QStringLiteral("pill-streaming-wide"),
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening,
                         QStringLiteral("日本語の文章が話されたとおりに書かれている"));
         }},
        {QStringLiteral("pill-large-text"),
         [longText](Stage &stage) {
             stage.memory.appearance->scale = 1.5;
             return pill(stage, TranscriptionState::listening, longText);
         }},
        {QStringLiteral("pill-large-text-transcribing"),
         [](Stage &stage) {
             stage.memory.appearance->scale = 1.5;
             return pill(stage, TranscriptionState::transcribing);
         }},
        {QStringLiteral("pill-uncomposited"),
         [](Stage &stage) {
             stage.memory.appearance->compositing = false;
             return pill(stage, TranscriptionState::listening);
         }},
    };
}

} // namespace Velloro
