#include "Screenshots/Scene.h"

#include "Support/WaitUntil.h"
#include "Views/Controls/Theme.h"
#include "Views/HotkeyRecorderModel.h"
#include "Views/ModelSettingsModel.h"
#include "Views/PrivacySettingsModel.h"

#include <QQuickItem>
#include <QQuickView>
#include <QTextStream>

namespace Velloro {

namespace {

/// As large as the settings window; `tall` shows what is scrolled to as well.
constexpr QSize paneSize(500, 360);
constexpr QSize tall(500, 1020);

QQuickItem *findItem(QQuickItem &root, const QString &name)
{
    if (root.objectName() == name)
        return &root;
    for (QQuickItem *child : root.childItems()) {
        if (QQuickItem *found = findItem(*child, name))
            return found;
    }
    return nullptr;
}

/// The view on a window's ground, with what pops up over it. `act` is called before the picture.
QImage onWindow(Stage &stage, const QString &file, QObject &model, QSize size = {},
                const std::function<void(QQuickItem &root)> &act = {})
{
    QQmlEngine &engine = stage.engine.engine();
    QQuickView view(&engine, nullptr);
    view.setColor(engine.singletonInstance<Theme *>(qmlTypeId("Velloro", 1, 0, "Theme"))->window());
    view.setResizeMode(size.isValid() ? QQuickView::SizeRootObjectToView
                                      : QQuickView::SizeViewToRootObject);
    if (size.isValid())
        view.resize(size);
    view.setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(&model)}});
    view.setSource(ViewEngine::url(file));
    if (view.status() != QQuickView::Ready) {
        for (const QQmlError &error : view.errors())
            QTextStream(stderr) << error.toString() << '\n';
        return {};
    }
    view.show();
    if (!waitUntil([&view] { return view.isExposed(); }))
        return {};
    if (act)
        act(*view.rootObject());
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(250));
    return view.grabWindow();
}

QImage models(Stage &stage, QSize size = paneSize, int category = 1, int openGroup = -1,
              const QString &openMenu = {})
{
    ModelSettingsModel model(stage.appState);
    return onWindow(
        stage, QStringLiteral("ModelSettingsView.qml"), model, size, [&](QQuickItem &root) {
            model.selectCategory(category);
            if (openGroup >= 0)
                model.toggleGroup(openGroup);
            if (QQuickItem *button = openMenu.isEmpty() ? nullptr : findItem(root, openMenu))
                QMetaObject::invokeMethod(button, "clicked");
        });
}

QImage privacy(Stage &stage, bool microphone, bool accessibility)
{
    stage.appState.setHasMicrophonePermission(microphone);
    stage.appState.setHasAccessibilityPermission(accessibility);
    PrivacySettingsModel model(stage.memory.platform, stage.appState);
    return onWindow(stage, QStringLiteral("PrivacySettingsView.qml"), model, paneSize);
}

QImage help(Stage &stage, SettingsPage page, bool granted = false)
{
    stage.memory.systemSettings->hasPages = false;
    stage.appState.setHasAccessibilityPermission(granted);
    PermissionsManager manager(stage.memory.platform, stage.appState);
    PermissionHelpModel model(manager, stage.appState);
    model.openSettingsPage(page);
    return onWindow(stage, QStringLiteral("PermissionHelpView.qml"), model);
}

/// `held`: what is held while recording; nothing when it does not record.
QImage recorder(Stage &stage, const QString &file, std::optional<uint32_t> held, bool taken = false)
{
    if (taken) {
        stage.memory.hotkeyRegistration->refusal = 10;
        stage.hotkeyManager->updateHotkey(2, HotkeyManager::cmdKey | HotkeyManager::shiftKey);
    }
    HotkeyRecorderModel model(*stage.hotkeyManager, *stage.memory.keyEventMonitor);
    if (held) {
        model.toggle();
        stage.memory.keyEventMonitor->flagsChanged(*held);
    }
    return onWindow(stage, file, model);
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
             return models(stage, tall, 1, -1, QStringLiteral("assignedModel"));
         }},
        {QStringLiteral("models-menu-empty"),
         [](Stage &stage) {
             return models(stage, paneSize, 1, -1, QStringLiteral("assignedModel"));
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
         {std::pair(QStringLiteral("recorder"), QStringLiteral("HotkeyRecorder.qml")),
          std::pair(QStringLiteral("recorder-onboarding"),
                    QStringLiteral("OnboardingHotkeyRecorder.qml"))}) {
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
