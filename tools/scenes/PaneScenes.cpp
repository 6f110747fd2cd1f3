#include "Scene.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/Settings/Models/ModelSettingsViewModel.h"
#include "Views/Settings/Privacy/PermissionHelpViewModel.h"
#include "Views/Shared/HotkeyRecorderViewModel.h"

namespace Velloro {

namespace {

/// As large as the settings window; `tall` shows what is scrolled to as well.
constexpr QSize paneSize(500, 360);
constexpr QSize tall(500, 1020);

QVariantMap with(QObject &model)
{
    return {{u"model"_s, QVariant::fromValue(&model)}};
}

using Act = std::function<void(QQuickItem &root)>;

QImage models(Stage &stage, QSize size = paneSize, int category = 1, int openGroup = -1,
              const Act &act = {})
{
    ModelSettingsViewModel model(stage.appState);
    return stage.windowPicture(
        u"Settings/Models/ModelSettingsView.qml"_s, with(model),
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
    if (QQuickItem *button = Stage::findItem(root, u"assignedModel"_s))
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
    PermissionHelpViewModel help(stage.appState);
    return stage.windowPicture(u"Settings/Privacy/PrivacySettingsView.qml"_s,
                               {{u"appState"_s, QVariant::fromValue(&stage.appState)},
                                {u"help"_s, QVariant::fromValue(&help)}},
                               {}, paneSize);
}

QImage help(Stage &stage, SettingsPage page, bool granted = false)
{
    stage.memory.systemSettings->hasPages = false;
    stage.appState.setHasAccessibilityPermission(granted);
    PermissionHelpViewModel model(stage.appState);
    model.openSettingsPage(page);
    return stage.windowPicture(u"Settings/Privacy/PermissionHelpView.qml"_s, with(model));
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
        {u"models-fresh"_s, [](Stage &stage) { return models(stage); }},
        {u"models-states"_s,
         [](Stage &stage) {
             stage.setModelState(u"base-q5_1"_s, ModelDownloadState::downloaded());
             stage.setModelState(u"base-q8_0"_s, ModelDownloadState::downloading(0.427));
             stage.setModelState(u"base.en-q5_1"_s, ModelDownloadState::failed(u"No connection"_s));
             return models(stage, tall, 1, 1);
         }},
        {u"models-failed-help"_s,
         [](Stage &stage) {
             stage.setModelState(
                 u"tiny-q5_1"_s,
                 ModelDownloadState::failed(
                     u"The server closed the connection after 12.3 MB of 32.2 MB."_s));
             return models(stage, tall, 1, 0, focusOn(u"Retry"_s));
         }},
        {u"models-downloading-help"_s,
         [](Stage &stage) {
             stage.setModelState(u"tiny-q5_1"_s, ModelDownloadState::downloading(0.1));
             return models(stage, tall, 1, 0, [&stage](QQuickItem &root) {
                 // The speed is that between two reports.
                 for (const int64_t bytes : {200'000, 427'000}) {
                     stage.memory.downloadSession->delegate.downloadDidWriteData(DownloadTaskId(1),
                                                                                 bytes, 1'000'000);
                     (void)waitUntil([] { return false; }, std::chrono::milliseconds(600));
                 }
                 stage.memory.downloadSession->delegate.downloadDidWriteData(DownloadTaskId(1),
                                                                             428'000, 1'000'000);
                 focusOn(u"Downloading Tiny Q5"_s)(root);
             });
         }},
        {u"models-delete-help"_s,
         [](Stage &stage) {
             stage.setModelState(u"tiny-q5_1"_s, ModelDownloadState::downloaded());
             return models(stage, tall, 1, 0, focusOn(u"Delete model"_s));
         }},
        {u"models-full-selected"_s,
         [](Stage &stage) {
             const QString selected = stage.appState.whisperManager().selectedModelId();
             stage.setModelState(selected, ModelDownloadState::downloaded());
             stage.appState.setModelId(u"gone"_s, ModelPreset::large);
             const WhisperModelInfo &info = *ModelCatalog::modelById(selected);
             return models(stage, tall, int(info.category), int(info.size));
         }},
        {u"models-menu"_s,
         [](Stage &stage) {
             for (const char *id : {"base", "small-q5_1", "medium"})
                 stage.setModelState(QLatin1StringView(id), ModelDownloadState::downloaded());
             stage.appState.setModelId(u"small-q5_1"_s, ModelPreset::small);
             return models(stage, tall, 1, -1, openMenu);
         }},
        {u"models-menu-empty"_s,
         [](Stage &stage) { return models(stage, paneSize, 1, -1, openMenu); }},
        {u"privacy-granted"_s, [](Stage &stage) { return privacy(stage, true, true); }},
        {u"privacy-one"_s, [](Stage &stage) { return privacy(stage, true, false); }},
        {u"privacy-none"_s, [](Stage &stage) { return privacy(stage, false, false); }},
        {u"help-microphone"_s, [](Stage &stage) { return help(stage, SettingsPage::microphone); }},
        {u"help-accessibility"_s,
         [](Stage &stage) { return help(stage, SettingsPage::accessibility); }},
        {u"help-granted"_s,
         [](Stage &stage) { return help(stage, SettingsPage::accessibility, true); }},
    };
    for (const auto &[name, file] :
         {std::pair(u"recorder"_s, u"Settings/General/HotkeyRecorder.qml"_s),
          std::pair(u"recorder-onboarding"_s, u"Onboarding/OnboardingHotkeyRecorder.qml"_s)}) {
        scenes << Scene{name + u"-idle"_s,
                        [file](Stage &stage) { return recorder(stage, file, std::nullopt); }};
        scenes << Scene{name + u"-prompt"_s,
                        [file](Stage &stage) { return recorder(stage, file, 0); }};
        scenes << Scene{name + u"-held"_s,
                        [file](Stage &stage) { return recorder(stage, file, 0x120000); }};
        scenes << Scene{name + u"-taken"_s,
                        [file](Stage &stage) { return recorder(stage, file, std::nullopt, true); }};
    }
    return scenes;
}

} // namespace Velloro
