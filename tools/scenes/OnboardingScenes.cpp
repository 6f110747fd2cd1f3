#include "Scene.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/Onboarding/OnboardingViewModel.h"

namespace Velloro {

namespace {

const QString firstModel = u"small-q8_0"_s;

QImage step(Stage &stage, int steps, const QString &failure = {})
{
    ModelDownloadStepViewModel download(stage.appState);
    OnboardingViewModel model(stage.memory.platform, stage.appState, *stage.hotkeyManager,
                              download);
    const bool hasMicrophone = stage.appState.hasMicrophonePermission();
    stage.appState.setHasMicrophonePermission(true);
    const bool isDownloading = stage.appState.isDownloadingModel();
    stage.appState.setIsDownloadingModel(false);
    for (; steps > 0; --steps)
        model.proceed();
    if (!failure.isEmpty()) {
        download.startDownload();
        stage.setModelState(firstModel, ModelDownloadState::failed(failure));
        (void)waitUntil([&] { return !stage.appState.isDownloadingModel(); });
    }
    stage.appState.setHasMicrophonePermission(hasMicrophone);
    stage.appState.setIsDownloadingModel(isDownloading);
    return stage.picture(u"Onboarding/OnboardingView.qml"_s,
                         {{u"model"_s, QVariant::fromValue(&model)}});
}

} // namespace

QList<Scene> onboardingScenes()
{
    return {
        {u"onboarding-1-welcome"_s, [](Stage &stage) { return step(stage, 0); }},
        {u"onboarding-2-microphone-refused"_s,
         [](Stage &stage) {
             stage.memory.captureAuthorization->status = AuthorizationStatus::denied;
             return step(stage, 1);
         }},
        {u"onboarding-2-permissions"_s, [](Stage &stage) { return step(stage, 1); }},
        {u"onboarding-3-download"_s, [](Stage &stage) { return step(stage, 2); }},
        {u"onboarding-3-failed"_s,
         [](Stage &stage) { return step(stage, 2, u"Could not resolve host: huggingface.co"_s); }},
        {u"onboarding-3-downloading"_s,
         [](Stage &stage) {
             stage.appState.setIsDownloadingModel(true);
             stage.appState.setDownloadProgress(0.427);
             return step(stage, 2);
         }},
        {u"onboarding-3-ready"_s,
         [](Stage &stage) {
             stage.appState.setDownloadedModels({ModelPreset::medium});
             return step(stage, 2);
         }},
        {u"onboarding-4-hotkey-taken"_s,
         [](Stage &stage) {
             stage.memory.hotkeyRegistration->refusal = 10;
             stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
             stage.appState.setRecordingMode(RecordingMode::toggle);
             return step(stage, 3);
         }},
        {u"onboarding-4-hotkey"_s, [](Stage &stage) { return step(stage, 3); }},
        {u"onboarding-5-showcase"_s, [](Stage &stage) { return step(stage, 4); }},
        {u"onboarding-6-done"_s,
         [](Stage &stage) {
             stage.setModelState(firstModel, ModelDownloadState::downloaded());
             stage.memory.trayHost->appear();
             return step(stage, 5);
         }},
        {u"onboarding-6-no-model-no-tray"_s, [](Stage &stage) { return step(stage, 5); }},
    };
}

} // namespace Velloro
