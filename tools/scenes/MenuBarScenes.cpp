#include "Scene.h"

#include "Base/StringLiterals.h"
#include "Views/Tray/MenuBarViewModel.h"

namespace Velloro {

namespace {

/// `focused`: the name of the control that has the keyboard, with its help.
QImage panel(Stage &stage, const QString &focused = {})
{
    MenuBarViewModel model(stage.memory.platform, stage.appState, *stage.hotkeyManager);
    if (!focused.isEmpty()) {
        return stage.windowPicture(
            u"Tray/MenuBarView.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}},
            [&](QQuickItem &root) { Stage::focus(Stage::findItem(root, focused)); });
    }
    return stage.picture(u"Tray/MenuBarView.qml"_s, {{u"model"_s, QVariant::fromValue(&model)}});
}

} // namespace

QList<Scene> menuBarScenes()
{
    return {
        {u"panel-fresh"_s, [](Stage &stage) { return panel(stage); }},
        {u"panel-downloaded"_s,
         [](Stage &stage) {
             for (const char *id : {"base", "small"})
                 stage.setModelState(QLatin1StringView(id), ModelDownloadState::downloaded());
             return panel(stage);
         }},
        {u"panel-models"_s,
         [](Stage &stage) {
             stage.setModelState(u"base"_s, ModelDownloadState::downloaded());
             stage.setModelState(u"small"_s, ModelDownloadState::downloading(0.427));
             stage.setModelState(u"medium"_s, ModelDownloadState::failed(u"No connection"_s));
             stage.appState.setTranscriptionState(TranscriptionState::listening);
             stage.appState.setRecordingMode(RecordingMode::toggle);
             return panel(stage);
         }},
        {u"panel-hotkey-taken"_s,
         [](Stage &stage) {
             stage.memory.hotkeyRegistration->refusal = 10;
             stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
             stage.appState.setSelectedModel(ModelPreset::large);
             return panel(stage);
         }},
        {u"panel-failed-help"_s,
         [](Stage &stage) {
             stage.setModelState(u"medium"_s, ModelDownloadState::failed(u"No connection"_s));
             return panel(stage, u"Retry download"_s);
         }},
        {u"panel-focus"_s, [](Stage &stage) { return panel(stage, u"Small, Fast"_s); }},
        {u"panel-focus-footer"_s, [](Stage &stage) { return panel(stage, u"Settings..."_s); }},
        {u"panel-accent"_s,
         [](Stage &stage) {
             stage.memory.appearance->accent = 0xe66100;
             return panel(stage);
         }},
    };
}

} // namespace Velloro
