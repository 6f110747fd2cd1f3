#include "Screenshots/Scene.h"

#include "Support/WaitUntil.h"

#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickItemGrabResult>
#include <QQuickView>
#include <QTextStream>

namespace Velloro {

QImage Stage::picture(const QString &file, const QVariantMap &initialProperties, QSize size)
{
    QQuickView view(&engine.engine(), nullptr);
    view.setColor(Qt::transparent);
    if (size.isValid()) {
        view.setResizeMode(QQuickView::SizeRootObjectToView);
        view.resize(size);
    } else {
        view.setResizeMode(QQuickView::SizeViewToRootObject);
    }
    view.setInitialProperties(initialProperties);
    view.setSource(ViewEngine::url(file));
    if (view.status() != QQuickView::Ready) {
        for (const QQmlError &error : view.errors())
            QTextStream(stderr) << error.toString() << '\n';
        return {};
    }
    return picture(view);
}

QImage Stage::pictureOfText(const QByteArray &qml)
{
    QQmlComponent component(&engine.engine());
    component.setData(qml, QUrl(QStringLiteral("qrc:/Scene.qml")));
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
