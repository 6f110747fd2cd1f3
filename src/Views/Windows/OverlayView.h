#pragma once

#include "Platform/Overlay.h"
#include "Views/Windows/ViewEngine.h"

#include <QElapsedTimer>
#include <QImage>
#include <QQmlError>
#include <QQuickItem>
#include <QQuickRenderControl>
#include <QQuickWindow>
#include <QTimer>
#include <memory>

namespace Velloro {

/// One QML view on the platform's overlay, as large as its root object. It is painted into a
/// picture when something in it has changed, as often as the screen shows it and 60 times a second
/// at most, and not while it is hidden. Main thread only.
class OverlayView : public QObject
{
    Q_OBJECT

public:
    /// Both outlive the view.
    OverlayView(ViewEngine &engine, Overlay &overlay);
    ~OverlayView() override;

    /// Makes the root object; where that fails the errors are returned, and nothing can be shown.
    [[nodiscard]] QList<QQmlError> load(const QUrl &source, const QVariantMap &initialProperties);

    void show(int bottomMargin);
    void hide();

    /// In logical pixels.
    [[nodiscard]] QSize size() const { return m_root->size().toSize(); }
    /// The scene, in a window that is never on a screen itself.
    [[nodiscard]] QQuickWindow *window() { return &m_window; }

private:
    void adoptPixelRatio();
    void markStale();
    void offerRoom();
    void renderWhenDue();
    void render();

    Overlay &m_overlay;
    QQmlEngine &m_engine;
    QImage m_picture;
    QQuickRenderControl m_control;
    QQuickWindow m_window{&m_control};
    std::unique_ptr<QQuickItem> m_root;
    bool m_isShown = false;
    /// The overlay takes a picture.
    bool m_hasRoom = false;
    /// The scene is not as in the picture.
    bool m_isStale = true;
    /// Since the last picture was made.
    QElapsedTimer m_sinceRendering;
    QTimer m_due;
};

} // namespace Velloro
