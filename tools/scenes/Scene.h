#pragma once

#include "Core/State/AppState.h"
#include "Managers/HotkeyManager.h"
#include "Support/InMemoryPlatform.h"
#include "Views/Windows/ViewEngine.h"

#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QString>
#include <functional>

namespace Velloro {

/// What the scenes are staged with: a program without a desktop, fresh for each scene.
struct Stage
{
    InMemoryPlatform memory;
    AppState appState{memory.platform};
    std::unique_ptr<HotkeyManager> hotkeyManager = std::make_unique<HotkeyManager>(memory.platform);
    ViewEngine engine{*memory.appearance};

    /// Shows a view of the module on its own and takes its picture, once it stands still.
    [[nodiscard]] QImage picture(const QString &file, const QVariantMap &initialProperties,
                                 QSize size = {});
    /// The same for QML text that imports the module.
    [[nodiscard]] QImage pictureOfText(const QByteArray &qml);
    /// Takes the picture of a window, which it shows.
    [[nodiscard]] static QImage picture(QQuickWindow &window);
    /// A view of the module on a window's ground, with the menus and tips that pop up over it, once
    /// what `act` sets off stands still.
    [[nodiscard]] QImage windowPicture(const QString &file, const QVariantMap &initialProperties,
                                       const std::function<void(QQuickItem &root)> &act = {},
                                       QSize size = {});
    /// The item with this object name or accessible name under `root`; null where there is none.
    [[nodiscard]] static QQuickItem *findItem(QQuickItem &root, const QString &name);
    /// Gives an item the keyboard as the Tab key does.
    static void focus(QQuickItem *item);
    /// Gives a model a state by way of its download.
    void setModelState(const QString &modelId, const ModelDownloadState &state);
};

/// One view in one state. `take` is called on a fresh stage.
struct Scene
{
    QString name;
    std::function<QImage(Stage &stage)> take;
};

// The scenes of each view; a new view adds its own here and in Screenshots.cpp.
[[nodiscard]] QList<Scene> symbolScenes();
[[nodiscard]] QList<Scene> controlScenes();
[[nodiscard]] QList<Scene> recordingPillScenes();
[[nodiscard]] QList<Scene> menuBarScenes();
[[nodiscard]] QList<Scene> paneScenes();
[[nodiscard]] QList<Scene> settingsScenes();
[[nodiscard]] QList<Scene> onboardingScenes();

} // namespace Velloro
