#include "Scene.h"

#include "Support/WaitUntil.h"
#include "Views/Shared/HotkeyRecorderViewModel.h"
#include "Views/Settings/Models/ModelSettingsViewModel.h"
#include "Views/Settings/Privacy/PrivacySettingsViewModel.h"

namespace Velloro {

namespace {

/// As large as the settings window; `tall` shows what is scrolled to as well.
constexpr QSize paneSize(500, 360);
constexpr QSize tall(500, 1020);

QVariantMap with(QObject &model)
{
    return {{QStringLiteral("model"), QVariant::fromValue(&model)}};
}

using Act = std::function<void(QQuickItem &root)>;

QImage models(Stage &stage, QSize size = paneSize, int category = 1, int openGroup = -1,
              const Act &act = {})
{
    ModelSettingsViewModel model(stage.appState);
    return stage.windowPicture(
        QStringLiteral("Settings/Models/ModelSettingsView.qml"), with(model),
        [&](QQuickItem &root) {
            model.selectCategory(category);
            if (openGroup >= 0)
                model.toggleGroup(openGroup);
            if (act)
                act(root);
        },
        size);
}

/// Opens the menu of the first preset.
void openMenu(QQuickItem &root)
{
    if (QQuickItem *button = Stage::findItem(root, QStringLiteral("assignedModel")))
        QMetaObject::invokeMethod(button, "clicked");
}

/// Gives the keyboard to the control with this name, whose help comes up.
Act focusOn(const QString &name)
{
    return [name](QQuickItem &root) { Stage::focus(Stage::findItem(root, name)); };
}

QImage privacy(Stage &stage, bool microphone, bool accessibility)
{
    stage.appState.setHasMicrophonePermission(microphone);
    stage.appState.setHasAccessibilityPermission(accessibility);
    PrivacySettingsViewModel model(stage.appState);
    return stage.windowPicture(QStringLiteral("Settings/Privacy/PrivacySettingsView.qml"), with(model), {},
                               paneSize);
}

QImage help(Stage &stage, SettingsPage page, bool granted = false)
{
    stage.memory.systemSettings->hasPages = false;
    stage.appState.setHasAccessibilityPermission(granted);
    PermissionHelpViewModel model(stage.appState);
    model.openSettingsPage(page);
    return stage.windowPicture(QStringLiteral("Settings/Privacy/PermissionHelpView.qml"), with(model));
}

/// `held`: what is held while recording; nothing when it does not record.
QImage recorder(Stage &stage, const QString &file, std::optional<uint32_t> held, bool taken = false)
{
    if (taken) {
        stage.memory.hotkeyRegistration->refusal = 10;
        stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
    }
    HotkeyRecorderViewModel model(*stage.hotkeyManager, *stage.memory.keyEventMonitor);
    if (held) {
        model.toggle();
        stage.memory.keyEventMonitor->flagsChanged(*held);
    }
    return stage.windowPicture(file, with(model));
}

} // namespace

QList<Scene> paneScenes()
{
    QList<Scene> scenes{
        {QStringLiteral("models-fresh"), [](Stage &stage) { return models(stage); }},
        {QStringLiteral("models-states"),
         [](Stage &stage) {
             stage.setModelState(QStringLiteral("base-q5_1"), ModelDownloadState::downloaded());
             stage.setModelState(QStringLiteral("base-q8_0"),
                                 ModelDownloadState::downloading(0.427));
             stage.setModelState(QStringLiteral("base.en-q5_1"),
                                 ModelDownloadState::failed(QStringLiteral("No connection")));
             return models(stage, tall, 1, 1);
         }},
        {QStringLiteral("models-failed-help"),
         [](Stage &stage) {
             stage.setModelState(
                 QStringLiteral("tiny-q5_1"),
                 ModelDownloadState::failed(QStringLiteral(
                     "The server closed the connection after 12.3 MB of 32.2 MB.")));
             return models(stage, tall, 1, 0, focusOn(QStringLiteral("Retry")));
         }},
        {QStringLiteral("models-downloading-help"),
         [](Stage &stage) {
             stage.setModelState(QStringLiteral("tiny-q5_1"),
                                 ModelDownloadState::downloading(0.1));
             return models(stage, tall, 1, 0, [&stage](QQuickItem &root) {
                 // The speed is that between two reports.
                 for (const int64_t bytes : {200'000, 427'000}) {
                     stage.memory.downloadSession->delegate.downloadDidWriteData(
                         DownloadTaskId(1), bytes, 1'000'000);
                     (void)waitUntil([] { return false; }, std::chrono::milliseconds(600));
                 }
                 stage.memory.downloadSession->delegate.downloadDidWriteData(DownloadTaskId(1),
                                                                             428'000, 1'000'000);
                 focusOn(QStringLiteral("Downloading Tiny Q5"))(root);
             });
         }},
        {QStringLiteral("models-delete-help"),
         [](Stage &stage) {
             stage.setModelState(QStringLiteral("tiny-q5_1"), ModelDownloadState::downloaded());
             return models(stage, tall, 1, 0, focusOn(QStringLiteral("Delete model")));
         }},
        {QStringLiteral("models-full-selected"),
         [](Stage &stage) {
             const QString selected = stage.appState.whisperManager().selectedModelId();
             stage.setModelState(selected, ModelDownloadState::downloaded());
             stage.appState.setModelId(QStringLiteral("gone"), ModelPreset::large);
             const WhisperModelInfo &info = *ModelCatalog::modelById(selected);
             return models(stage, tall, int(info.category), int(info.size));
         }},
        {QStringLiteral("models-large-text"),
         [](Stage &stage) {
             stage.memory.appearance->scale = 1.5;
             stage.memory.appearance->accent = 0xe66100;
             return models(stage, tall, 1, 3);
         }},
        {QStringLiteral("models-menu"),
         [](Stage &stage) {
             for (const char *id : {"base", "small-q5_1", "medium"})
                 stage.setModelState(QLatin1StringView(id), ModelDownloadState::downloaded());
             stage.appState.setModelId(QStringLiteral("small-q5_1"), ModelPreset::small);
             return models(stage, tall, 1, -1, openMenu);
         }},
        {QStringLiteral("models-menu-empty"),
         [](Stage &stage) {
             return models(stage, paneSize, 1, -1, openMenu);
         }},
        {QStringLiteral("privacy-granted"), [](Stage &stage) { return privacy(stage, true, true); }},
        {QStringLiteral("privacy-one"), [](Stage &stage) { return privacy(stage, true, false); }},
        {QStringLiteral("privacy-none"), [](Stage &stage) { return privacy(stage, false, false); }},
        {QStringLiteral("help-microphone"),
         [](Stage &stage) { return help(stage, SettingsPage::microphone); }},
        {QStringLiteral("help-accessibility"),
         [](Stage &stage) { return help(stage, SettingsPage::accessibility); }},
        {QStringLiteral("help-granted"),
         [](Stage &stage) { return help(stage, SettingsPage::accessibility, true); }},
    };
    for (const auto &[name, file] :
         {std::pair(QStringLiteral("recorder"), QStringLiteral("Settings/General/HotkeyRecorder.qml")),
          std::pair(QStringLiteral("recorder-onboarding"),
                    QStringLiteral("Onboarding/OnboardingHotkeyRecorder.qml"))}) {
        scenes << Scene{name + QStringLiteral("-idle"), [file](Stage &stage) {
                            return recorder(stage, file, std::nullopt);
                        }};
        scenes << Scene{name + QStringLiteral("-prompt"),
                        [file](Stage &stage) { return recorder(stage, file, 0); }};
        scenes << Scene{name + QStringLiteral("-held"),
                        [file](Stage &stage) { return recorder(stage, file, 0x120000); }};
        scenes << Scene{name + QStringLiteral("-taken"), [file](Stage &stage) {
                            return recorder(stage, file, std::nullopt, true);
                        }};
    }
    return scenes;
}

} // namespace Velloro
