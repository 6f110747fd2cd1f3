#include "Scene.h"

#include "Views/Settings/SettingsViewModel.h"

#include <QAccessible>

namespace Velloro {

namespace {

QImage settings(Stage &stage, int tab, const std::function<void(QQuickItem &root)> &act = {})
{
    SettingsViewModel model(stage.memory.platform, stage.appState, *stage.hotkeyManager);
    return stage.windowPicture(QStringLiteral("Settings/SettingsView.qml"),
                               {{QStringLiteral("model"), QVariant::fromValue(&model)},
                                {QStringLiteral("currentIndex"), tab}},
                               act);
}

/// Gives the keyboard to the control with this name, which comes into view.
std::function<void(QQuickItem &root)> focusOn(const QString &name)
{
    return [name](QQuickItem &root) { Stage::focus(Stage::findItem(root, name)); };
}

/// Presses the control with this name.
std::function<void(QQuickItem &root)> press(const QString &name)
{
    return [name](QQuickItem &root) {
        QQuickItem *item = Stage::findItem(root, name);
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(item);
        if (interface && interface->actionInterface())
            interface->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    };
}

void largeText(Stage &stage)
{
    stage.memory.appearance->scale = 1.5;
}

void fillDictionary(Stage &stage)
{
    QStringList words{QStringLiteral("Claude"), QStringLiteral("Kubernetes"),
                      QStringLiteral("قاموس"), QStringLiteral("日本語の単語"),
                      QStringLiteral("A word that is far too long for the row in which it has to "
                                     "stand, and so is cut"),
                      QStringLiteral("Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbau"
                                     "unterbeamtengesellschaft")};
    for (int number = 1; number <= 20; ++number)
        words << QStringLiteral("Word %1").arg(number);
    stage.appState.setCustomDictionary(words);
}

void fillHistory(Stage &stage)
{
    stage.appState.addToHistory(QStringLiteral("One\ntwo\nthree\nfour\nfive"));
    stage.appState.addToHistory(QStringLiteral("x").repeated(400));
    stage.appState.addToHistory(QStringLiteral("هذا نص يُكتب من اليمين إلى اليسار."));
    stage.appState.addToHistory(
        QStringLiteral("The quick brown fox jumps over the lazy dog. ").repeated(200));
    stage.appState.addToHistory(QStringLiteral("A short one."));
}

} // namespace

QList<Scene> settingsScenes()
{
    return {
        {QStringLiteral("settings-general"), [](Stage &stage) { return settings(stage, 0); }},
        {QStringLiteral("settings-general-behavior"),
         [](Stage &stage) {
             return settings(stage, 0, focusOn(QStringLiteral("enableRealtimeStreaming")));
         }},
        {QStringLiteral("settings-general-end"),
         [](Stage &stage) {
             return settings(stage, 0, focusOn(QStringLiteral("enableTextCorrection")));
         }},
        {QStringLiteral("settings-general-recording"),
         [](Stage &stage) {
             return settings(stage, 0, [&stage](QQuickItem &root) {
                 press(QStringLiteral("hotkeyRecorder"))(root);
                 stage.memory.keyEventMonitor->flagsChanged(0x120000);
             });
         }},
        {QStringLiteral("settings-general-taken"),
         [](Stage &stage) {
             stage.memory.hotkeyRegistration->refusal = 10;
             stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
             return settings(stage, 0, focusOn(QStringLiteral("hotkeyRecorder")));
         }},
        {QStringLiteral("settings-general-languages"),
         [](Stage &stage) { return settings(stage, 0, press(QStringLiteral("language"))); }},
        {QStringLiteral("settings-general-large-text"),
         [](Stage &stage) {
             largeText(stage);
             return settings(stage, 0);
         }},
        {QStringLiteral("settings-model"), [](Stage &stage) { return settings(stage, 1); }},
        {QStringLiteral("settings-model-large-text"),
         [](Stage &stage) {
             largeText(stage);
             return settings(stage, 1);
         }},
        {QStringLiteral("settings-dictionary-empty"),
         [](Stage &stage) { return settings(stage, 2); }},
        {QStringLiteral("settings-dictionary"),
         [](Stage &stage) {
             fillDictionary(stage);
             return settings(stage, 2, [](QQuickItem &root) {
                 auto *model = root.property("model").value<SettingsViewModel *>();
                 model->property("dictionary").value<QObject *>()->setProperty(
                     "newWord", QStringLiteral("GPT-4"));
             });
         }},
        {QStringLiteral("settings-dictionary-rows"),
         [](Stage &stage) {
             fillDictionary(stage);
             return settings(stage, 2, focusOn(QStringLiteral("trash")));
         }},
        {QStringLiteral("settings-dictionary-large-text"),
         [](Stage &stage) {
             largeText(stage);
             return settings(stage, 2);
         }},
        {QStringLiteral("settings-history-empty"), [](Stage &stage) { return settings(stage, 3); }},
        {QStringLiteral("settings-history"),
         [](Stage &stage) {
             fillHistory(stage);
             return settings(stage, 3, press(QStringLiteral("copy")));
         }},
        {QStringLiteral("settings-history-focus"),
         [](Stage &stage) {
             fillHistory(stage);
             return settings(stage, 3, focusOn(QStringLiteral("copy")));
         }},
        {QStringLiteral("settings-history-large-text"),
         [](Stage &stage) {
             largeText(stage);
             fillHistory(stage);
             return settings(stage, 3);
         }},
        {QStringLiteral("settings-privacy"), [](Stage &stage) { return settings(stage, 4); }},
        {QStringLiteral("settings-privacy-large-text"),
         [](Stage &stage) {
             largeText(stage);
             return settings(stage, 4, focusOn(QStringLiteral("Clear Transcription History")));
         }},
    };
}

} // namespace Velloro
