#include "Scene.h"

#include "Base/StringLiterals.h"
#include "Support/WaitUntil.h"
#include "Views/Controls/Theme.h"

#include <QAccessible>
#include <QQmlComponent>
#include <QQuickItemGrabResult>
#include <QQuickView>
#include <QTextStream>

namespace Velloro {

namespace {

/// Makes a view of a file of the module, of its own size unless one is given; a failure is told.
bool load(QQuickView &view, const QString &file, const QVariantMap &initialProperties, QSize size)
{
    view.setResizeMode(size.isValid() ? QQuickView::SizeRootObjectToView
                                      : QQuickView::SizeViewToRootObject);
    if (size.isValid())
        view.resize(size);
    view.setInitialProperties(initialProperties);
    view.setSource(ViewEngine::url(file));
    for (const QQmlError &error : view.errors())
        QTextStream(stderr) << error.toString() << '\n';
    return view.status() == QQuickView::Ready;
}

} // namespace

QImage Stage::picture(const QString &file, const QVariantMap &initialProperties, QSize size)
{
    QQuickView view(&engine.engine(), nullptr);
    view.setColor(Qt::transparent);
    if (!load(view, file, initialProperties, size))
        return {};
    return picture(view);
}

QImage Stage::pictureOfText(const QByteArray &qml)
{
    QQmlComponent component(&engine.engine());
    component.setData(qml, QUrl(u"qrc:/Scene.qml"_s));
    std::unique_ptr<QObject> object(component.create());
    auto *item = qobject_cast<QQuickItem *>(object.get());
    if (!item) {
        QTextStream(stderr) << component.errorString();
        return {};
    }
    QQuickWindow window;
    window.setColor(Qt::transparent);
    window.resize(item->size().toSize());
    item->setParentItem(window.contentItem());
    window.show();
    window.requestActivate();
    return picture(window);
}

QImage Stage::picture(QQuickWindow &window)
{
    window.show();
    (void)waitUntil([&window] { return window.isExposed(); });
    // Animations last 0.15 s at most.
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(250));
    // The content rather than the window: the windows of a screen that is none are not translucent.
    QQuickItem *content = window.contentItem()->childItems().value(0);
    if (!content)
        return {};
    const double ratio = window.effectiveDevicePixelRatio();
    const auto grab = content->grabToImage((window.size() * ratio));
    QImage image;
    (void)waitUntil([&] {
        image = grab->image();
        return !image.isNull();
    });
    return image;
}

QImage Stage::windowPicture(const QString &file, const QVariantMap &initialProperties,
                            const std::function<void(QQuickItem &root)> &act, QSize size)
{
    QQuickView view(&engine.engine(), nullptr);
    view.setColor(
        engine.engine().singletonInstance<Theme *>(qmlTypeId("Velloro", 1, 0, "Theme"))->window());
    if (!load(view, file, initialProperties, size))
        return {};
    view.show();
    view.requestActivate();
    if (!waitUntil([&view] { return view.isExposed() && view.isActive(); }))
        return {};
    if (act)
        act(*view.rootObject());
    // Help comes after 0.6 s; animations last 0.15 s at most.
    (void)waitUntil([] { return false; }, std::chrono::milliseconds(act ? 900 : 250));
    return view.grabWindow();
}

QQuickItem *Stage::findItem(QQuickItem &root, const QString &name)
{
    if (root.objectName() == name)
        return &root;
    if (root.isVisible()) {
        QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(&root);
        if (interface && interface->text(QAccessible::Name) == name)
            return &root;
    }
    for (QQuickItem *child : root.childItems()) {
        if (QQuickItem *found = findItem(*child, name))
            return found;
    }
    return nullptr;
}

void Stage::focus(QQuickItem *item)
{
    if (item)
        item->forceActiveFocus(Qt::TabFocusReason);
}

void Stage::setModelState(const QString &modelId, const ModelDownloadState &state)
{
    WhisperManager &manager = appState.whisperManager();
    if (state.isDownloaded()) {
        memory.fileSystem->files.insert(manager.modelURL(modelId));
        manager.refreshModelStates();
        return;
    }
    manager.downloadModel(modelId);
    const auto task = DownloadTaskId(memory.downloadSession->tasks.size());
    DownloadSessionDelegate &delegate = memory.downloadSession->delegate;
    if (const auto *downloading = std::get_if<ModelDownloadState::Downloading>(&state.value))
        delegate.downloadDidWriteData(task, int64_t(downloading->progress * 1e6), 1'000'000);
    else if (const auto *failed = std::get_if<ModelDownloadState::Failed>(&state.value))
        delegate.downloadDidComplete(task, PlatformError{1, failed->error});
}

} // namespace Velloro
