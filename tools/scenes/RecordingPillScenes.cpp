#include "Scene.h"

#include "Base/StringLiterals.h"
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
    const QString longText = u"The quick brown fox jumps over the lazy dog and runs"_s;
    return {
        {u"pill-idle"_s, [](Stage &stage) { return pill(stage, TranscriptionState::idle); }},
        {u"pill-listening"_s,
         [](Stage &stage) { return pill(stage, TranscriptionState::listening); }},
        {u"pill-transcribing"_s,
         [](Stage &stage) { return pill(stage, TranscriptionState::transcribing); }},
        {u"pill-inserting"_s,
         [](Stage &stage) { return pill(stage, TranscriptionState::inserting); }},
        {u"pill-streaming-empty"_s,
         [](Stage &stage) { return pill(stage, TranscriptionState::listening, u""_s); }},
        {u"pill-streaming"_s,
         [](Stage &stage) { return pill(stage, TranscriptionState::listening, u"hello wor"_s); }},
        {u"pill-streaming-long"_s,
         [longText](Stage &stage) { return pill(stage, TranscriptionState::listening, longText); }},
        {u"pill-streaming-transcribing"_s,
         [longText](Stage &stage) {
             return pill(stage, TranscriptionState::transcribing, longText);
         }},
        {u"pill-streaming-long-word"_s,
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening,
                         u"Donaudampfschifffahrtsgesellschaftskapitän"_s);
         }},
        {u"pill-streaming-right-to-left"_s,
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening,
                         u"هذا نص يُكتب من اليمين إلى اليسار"_s);
         }},
        {u"pill-streaming-wide"_s,
         [](Stage &stage) {
             return pill(stage, TranscriptionState::listening,
                         u"日本語の文章が話されたとおりに書かれている"_s);
         }},
        {u"pill-uncomposited"_s,
         [](Stage &stage) {
             stage.memory.appearance->compositing = false;
             return pill(stage, TranscriptionState::listening);
         }},
    };
}

} // namespace Velloro
