#include "Views/Controls/PixelNode.h"

#include <QPainter>
#include <QQuickWindow>
#include <QSGRendererInterface>

namespace Velloro {

namespace {

/// A rectangle of whole pixels. Its size is rounded rather than its end: a circle stays one wherever
/// it is. What there is does not vanish.
QRectF onPixels(const QRectF &rect)
{
    return {QPointF(qRound(rect.left()), qRound(rect.top())),
            QSizeF(qMax(1, qRound(rect.width())), qMax(1, qRound(rect.height())))};
}

} // namespace

PixelNode::PixelNode(QQuickWindow &window)
    : m_window(window)
{
}

void PixelNode::setContent(const QRectF &rect, Painting painting)
{
    m_rect = rect;
    m_painting = std::move(painting);
    markDirty(DirtyGeometry | DirtyMaterial);
}

void PixelNode::render(const RenderState *state)
{
    auto *painter = static_cast<QPainter *>(m_window.rendererInterface()->getResource(
        &m_window, QSGRendererInterface::PainterResource));
    if (!painter || m_rect.isEmpty())
        return;
    // A clip is in the window's coordinates.
    if (const QRegion *clip = state->clipRegion(); clip && !clip->isEmpty())
        painter->setClipRegion(*clip, Qt::ReplaceClip);
    painter->setTransform(matrix()->toTransform());
    painter->setOpacity(inheritedOpacity());
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    const QTransform toPixels = painter->deviceTransform();
    if (toPixels.type() > QTransform::TxScale) {
        m_painting(*painter, m_rect, 1);
        return;
    }
    painter->setTransform(toPixels.inverted() * painter->transform());
    m_painting(*painter, onPixels(toPixels.mapRect(m_rect)), toPixels.m11());
}

} // namespace Velloro
