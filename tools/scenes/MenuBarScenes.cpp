#include "Scene.h"

#include "Views/Tray/MenuBarViewModel.h"

namespace Velloro {

namespace {

/// `focused`: the name of the control that has the keyboard, with its help.
QImage panel(Stage &stage, const QString &focused = {})
{
    MenuBarViewModel model(stage.appState, *stage.hotkeyManager);
    if (!focused.isEmpty()) {
        return stage.windowPicture(
            QStringLiteral("Tray/MenuBarView.qml"),
            {{QStringLiteral("model"), QVariant::fromValue(&model)}},
            [&](QQuickItem &root) { Stage::focus(Stage::findItem(root, focused)); });
    }
    return stage.picture(QStringLiteral("Tray/MenuBarView.qml"),
                         {{QStringLiteral("model"), QVariant::fromValue(&model)}});
}

} // namespace

QList<Scene> menuBarScenes()
{
    return {
        {QStringLiteral("panel-fresh"), [](Stage &stage) { return panel(stage); }},
        {QStringLiteral("panel-downloaded"),
         [](Stage &stage) {
             for (const char *id : {"base", "small"})
                 stage.setModelState(QLatin1StringView(id), ModelDownloadState::downloaded());
             return panel(stage);
         }},
        {QStringLiteral("panel-models"),
         [](Stage &stage) {
             stage.setModelState(QStringLiteral("base"), ModelDownloadState::downloaded());
             stage.setModelState(QStringLiteral("small"), ModelDownloadState::downloading(0.427));
             stage.setModelState(QStringLiteral("medium"),
                                 ModelDownloadState::failed(QStringLiteral("No connection")));
             stage.appState.setTranscriptionState(TranscriptionState::listening);
             stage.appState.setRecordingMode(RecordingMode::toggle);
             return panel(stage);
         }},
        {QStringLiteral("panel-hotkey-taken"),
         [](Stage &stage) {
             stage.memory.hotkeyRegistration->refusal = 10;
             stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
             stage.appState.setSelectedModel(ModelPreset::large);
             return panel(stage);
         }},
        {QStringLiteral("panel-failed-help"),
         [](Stage &stage) {
             stage.setModelState(QStringLiteral("medium"),
                                 ModelDownloadState::failed(QStringLiteral("No connection")));
             return panel(stage, QStringLiteral("Retry download"));
         }},
        {QStringLiteral("panel-focus"),
         [](Stage &stage) { return panel(stage, QStringLiteral("Small, Fast")); }},
        {QStringLiteral("panel-focus-footer"),
         [](Stage &stage) { return panel(stage, QStringLiteral("Settings...")); }},
        {QStringLiteral("panel-large-text"),
         [](Stage &stage) {
             stage.memory.appearance->scale = 1.5;
             stage.memory.appearance->accent = 0xe66100;
             return panel(stage);
         }},
    };
}

} // namespace Velloro
