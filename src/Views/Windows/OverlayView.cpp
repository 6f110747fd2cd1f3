#include "Views/Windows/OverlayView.h"

#include <QQmlComponent>
#include <QQuickRenderTarget>
#include <algorithm>
#include <cmath>

namespace Velloro {

namespace {

/// No screen shows more than somewhat less than 60 pictures a second.
constexpr qint64 frameMilliseconds = 17;

} // namespace

OverlayView::OverlayView(ViewEngine &engine, Overlay &overlay)
    : m_overlay(overlay)
    , m_engine(engine.engine())
{
    m_window.setColor(Qt::transparent);
    m_due.setSingleShot(true);
    m_due.setTimerType(Qt::PreciseTimer);
    connect(&m_due, &QTimer::timeout, this, &OverlayView::render);
    connect(&m_control, &QQuickRenderControl::sceneChanged, this, &OverlayView::markStale);
    connect(&m_control, &QQuickRenderControl::renderRequested, this, &OverlayView::markStale);
    connect(&overlay, &Overlay::placed, this, [this] {
        m_isStale = true;
        offerRoom();
    });
    connect(&overlay, &Overlay::frameShown, this, &OverlayView::offerRoom);
    connect(&overlay, &Overlay::pixelRatioChanged, this, &OverlayView::adoptPixelRatio);
}

OverlayView::~OverlayView() = default;

QList<QQmlError> OverlayView::load(const QUrl &source, const QVariantMap &initialProperties)
{
    QQmlComponent component(&m_engine, source);
    std::unique_ptr<QObject> made(component.createWithInitialProperties(initialProperties));
    m_root.reset(qobject_cast<QQuickItem *>(made.get()));
    if (!m_root)
        return component.errors();
    (void)made.release();
    return {};
}

void OverlayView::show(int bottomMargin)
{
    m_isShown = true;
    m_hasRoom = false;
    m_overlay.show(size(), bottomMargin);
    adoptPixelRatio();
}

void OverlayView::hide()
{
    m_isShown = false;
    m_hasRoom = false;
    m_due.stop();
    m_overlay.hide();
}

void OverlayView::adoptPixelRatio()
{
    const double ratio = m_overlay.pixelRatio();
    if (!m_isShown || (m_picture.devicePixelRatio() == ratio && !m_picture.isNull()))
        return;
    const QSizeF pixels = QSizeF(size()) * ratio;
    m_picture = QImage(int(std::lround(pixels.width())), int(std::lround(pixels.height())),
                       QImage::Format_ARGB32_Premultiplied);
    m_picture.setDevicePixelRatio(ratio);
    m_picture.fill(Qt::transparent);

    // Items that come to a window are painted in its pixels; those that are there keep theirs.
    m_root->setParentItem(nullptr);
    QQuickRenderTarget target = QQuickRenderTarget::fromPaintDevice(&m_picture);
    target.setDevicePixelRatio(ratio);
    m_window.setRenderTarget(target);
    m_window.setGeometry(QRect({}, size()));
    m_window.contentItem()->setSize(size());
    m_root->setParentItem(m_window.contentItem());
    markStale();
}

void OverlayView::markStale()
{
    m_isStale = true;
    renderWhenDue();
}

void OverlayView::offerRoom()
{
    m_hasRoom = true;
    renderWhenDue();
}

void OverlayView::renderWhenDue()
{
    if (!m_isShown || !m_hasRoom || !m_isStale || m_due.isActive())
        return;
    // Never at once: the scene may be in the midst of a change.
    const qint64 passed = m_sinceRendering.isValid() ? m_sinceRendering.elapsed()
                                                     : frameMilliseconds;
    m_due.start(int(std::max<qint64>(0, frameMilliseconds - passed)));
}

void OverlayView::render()
{
    m_hasRoom = false;
    m_sinceRendering.start();
    m_control.polishItems();
    m_control.beginFrame();
    m_control.sync();
    // What polishing has changed is in the picture.
    m_isStale = false;
    m_control.render();
    m_control.endFrame();
    m_overlay.present(m_picture);
}

} // namespace Velloro
