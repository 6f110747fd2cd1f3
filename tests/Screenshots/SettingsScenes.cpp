#include "Screenshots/Scene.h"

#include "Views/SettingsModel.h"

namespace Velloro {

namespace {

QImage settings(Stage &stage, int tab)
{
    SettingsModel model(stage.memory.platform, stage.appState, *stage.hotkeyManager);
    return stage.picture(QStringLiteral("SettingsView.qml"),
                         {{QStringLiteral("model"), QVariant::fromValue(&model)},
                          {QStringLiteral("currentIndex"), tab}});
}

} // namespace

QList<Scene> settingsScenes()
{
    return {
        {QStringLiteral("settings-general"), [](Stage &stage) { return settings(stage, 0); }},
        {QStringLiteral("settings-general-large-text"),
         [](Stage &stage) {
             stage.memory.appearance->scale = 1.5;
             return settings(stage, 0);
         }},
        {QStringLiteral("settings-model"), [](Stage &stage) { return settings(stage, 1); }},
        {QStringLiteral("settings-dictionary-empty"),
         [](Stage &stage) { return settings(stage, 2); }},
        {QStringLiteral("settings-dictionary"),
         [](Stage &stage) {
             stage.appState.setCustomDictionary(
                 {QStringLiteral("Claude"), QStringLiteral("Kubernetes"),
                  QStringLiteral("A word that is far too long for the row in which it has to stand, "
                                 "and so is cut")});
             return settings(stage, 2);
         }},
        {QStringLiteral("settings-history-empty"), [](Stage &stage) { return settings(stage, 3); }},
        {QStringLiteral("settings-history"),
         [](Stage &stage) {
             stage.appState.addToHistory(QStringLiteral("One\ntwo\nthree\nfour\nfive"));
             stage.appState.addToHistory(
                 QStringLiteral("The quick brown fox jumps over the lazy dog. ").repeated(200));
             stage.appState.addToHistory(QStringLiteral("A short one."));
             return settings(stage, 3);
         }},
        {QStringLiteral("settings-privacy"), [](Stage &stage) { return settings(stage, 4); }},
    };
}

} // namespace Velloro
