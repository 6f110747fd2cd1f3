#include "Scene.h"

#include "Support/WaitUntil.h"
#include "Views/Onboarding/OnboardingViewModel.h"

namespace Velloro {

namespace {

const QString firstModel = QStringLiteral("small-q8_0");

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
    return stage.picture(QStringLiteral("Onboarding/OnboardingView.qml"),
                         {{QStringLiteral("model"), QVariant::fromValue(&model)}});
}

} // namespace

QList<Scene> onboardingScenes()
{
    QList<Scene> scenes{
        {QStringLiteral("onboarding-1-welcome"), [](Stage &stage) { return step(stage, 0); }},
        {QStringLiteral("onboarding-2-permissions"),
         [](Stage &stage) {
             stage.memory.captureAuthorization->status = AuthorizationStatus::denied;
             return step(stage, 1);
         }},
        {QStringLiteral("onboarding-2-permissions-granted"),
         [](Stage &stage) { return step(stage, 1); }},
        {QStringLiteral("onboarding-3-download"), [](Stage &stage) { return step(stage, 2); }},
        {QStringLiteral("onboarding-3-failed"),
         [](Stage &stage) {
             return step(stage, 2, QStringLiteral("Could not resolve host: huggingface.co"));
         }},
        {QStringLiteral("onboarding-3-downloading"),
         [](Stage &stage) {
             stage.appState.setIsDownloadingModel(true);
             stage.appState.setDownloadProgress(0.427);
             return step(stage, 2);
         }},
        {QStringLiteral("onboarding-3-ready"),
         [](Stage &stage) {
             stage.appState.setDownloadedModels({ModelPreset::medium});
             return step(stage, 2);
         }},
        {QStringLiteral("onboarding-4-hotkey-taken"),
         [](Stage &stage) {
             stage.memory.hotkeyRegistration->refusal = 10;
             stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
             stage.appState.setRecordingMode(RecordingMode::toggle);
             return step(stage, 3);
         }},
        {QStringLiteral("onboarding-4-hotkey"), [](Stage &stage) { return step(stage, 3); }},
        {QStringLiteral("onboarding-5-showcase"), [](Stage &stage) { return step(stage, 4); }},
        {QStringLiteral("onboarding-6-done"),
         [](Stage &stage) {
             stage.setModelState(firstModel, ModelDownloadState::downloaded());
             stage.memory.trayHost->appear();
             return step(stage, 5);
         }},
        {QStringLiteral("onboarding-6-no-model-no-tray"),
         [](Stage &stage) { return step(stage, 5); }},
    };
    for (int index = 0; index < 6; ++index) {
        scenes << Scene{QStringLiteral("onboarding-%1-large-text").arg(index + 1),
                        [index](Stage &stage) {
                            stage.memory.appearance->scale = 1.5;
                            return step(stage, index);
                        }};
    }
    return scenes;
}

} // namespace Velloro
