#include "Scene.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/Settings/SettingsViewModel.h"

#include <QAccessible>

namespace Velloro {

namespace {

QImage settings(Stage &stage, int tab, const std::function<void(QQuickItem &root)> &act = {})
{
    SettingsViewModel model(stage.memory.platform, stage.appState, *stage.hotkeyManager);
    return stage.windowPicture(
        u"Settings/SettingsView.qml"_s,
        {{u"model"_s, QVariant::fromValue(&model)}, {u"currentIndex"_s, tab}}, act);
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

void fillDictionary(Stage &stage)
{
    QStringList words{u"Claude"_s,
                      u"Kubernetes"_s,
                      u"قاموس"_s,
                      u"日本語の単語"_s,
                      u"A word that is far too long for the row in which it has to "
                      "stand, and so is cut"_s,
                      u"Donaudampfschifffahrtselektrizitätenhauptbetriebswerkbau"
                      "unterbeamtengesellschaft"_s};
    for (int number = 1; number <= 20; ++number)
        words << u"Word %1"_s.arg(number);
    stage.appState.setCustomDictionary(words);
}

void fillHistory(Stage &stage)
{
    stage.appState.addToHistory(u"One\ntwo\nthree\nfour\nfive"_s);
    stage.appState.addToHistory(u"x"_s.repeated(400));
    stage.appState.addToHistory(u"هذا نص يُكتب من اليمين إلى اليسار."_s);
    stage.appState.addToHistory(u"The quick brown fox jumps over the lazy dog. "_s.repeated(200));
    stage.appState.addToHistory(u"A short one."_s);
}

} // namespace

QList<Scene> settingsScenes()
{
    return {
        {u"settings-general"_s, [](Stage &stage) { return settings(stage, 0); }},
        {u"settings-general-behavior"_s,
         [](Stage &stage) { return settings(stage, 0, focusOn(u"enableRealtimeStreaming"_s)); }},
        {u"settings-general-end"_s,
         [](Stage &stage) { return settings(stage, 0, focusOn(u"enableTextCorrection"_s)); }},
        {u"settings-general-recording"_s,
         [](Stage &stage) {
             return settings(stage, 0, [&stage](QQuickItem &root) {
                 press(u"hotkeyRecorder"_s)(root);
                 stage.memory.keyEventMonitor->flagsChanged(0x120000);
             });
         }},
        {u"settings-general-taken"_s,
         [](Stage &stage) {
             stage.memory.hotkeyRegistration->refusal = 10;
             stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
             return settings(stage, 0, focusOn(u"hotkeyRecorder"_s));
         }},
        {u"settings-general-languages"_s,
         [](Stage &stage) { return settings(stage, 0, press(u"language"_s)); }},
        {u"settings-model"_s, [](Stage &stage) { return settings(stage, 1); }},
        {u"settings-model-failed"_s,
         [](Stage &stage) {
             stage.setModelState(
                 u"tiny-q5_1"_s,
                 ModelDownloadState::failed(u"Could not resolve the host's name"_s));
             return settings(stage, 1, [](QQuickItem &root) {
                 root.property("model").value<SettingsViewModel *>()->models()->toggleGroup(0);
                 // The button comes into view only where it is once the group has opened.
                 (void)waitUntil([] { return false; }, std::chrono::milliseconds(250));
                 focusOn(u"Retry"_s)(root);
             });
         }},
        {u"settings-dictionary-empty"_s, [](Stage &stage) { return settings(stage, 2); }},
        {u"settings-dictionary"_s,
         [](Stage &stage) {
             fillDictionary(stage);
             return settings(stage, 2, [](QQuickItem &root) {
                 auto *model = root.property("model").value<SettingsViewModel *>();
                 model->property("dictionary")
                     .value<QObject *>()
                     ->setProperty("newWord", u"GPT-4"_s);
             });
         }},
        {u"settings-dictionary-rows"_s,
         [](Stage &stage) {
             fillDictionary(stage);
             return settings(stage, 2, focusOn(u"trash"_s));
         }},
        {u"settings-history-empty"_s, [](Stage &stage) { return settings(stage, 3); }},
        {u"settings-history"_s,
         [](Stage &stage) {
             fillHistory(stage);
             return settings(stage, 3, press(u"copy"_s));
         }},
        {u"settings-history-focus"_s,
         [](Stage &stage) {
             fillHistory(stage);
             return settings(stage, 3, focusOn(u"copy"_s));
         }},
        {u"settings-privacy"_s, [](Stage &stage) { return settings(stage, 4); }},
        {u"settings-privacy-microphone-refused"_s,
         [](Stage &stage) {
             stage.memory.captureAuthorization->status = AuthorizationStatus::denied;
             stage.appState.setHasMicrophonePermission(false);
             stage.appState.setHasAccessibilityPermission(true);
             return settings(stage, 4);
         }},
    };
}

} // namespace Velloro
