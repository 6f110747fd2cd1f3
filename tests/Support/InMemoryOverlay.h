#pragma once

#include "Platform/Overlay.h"

#include <QImage>
#include <QList>
#include <optional>

namespace Velloro {

/// An overlay whose screen is the test: it says when there is a place, and when a picture is shown.
class InMemoryOverlay : public Overlay
{
public:
    /// What `show` asked for; nothing while it is hidden.
    std::optional<QSize> size;
    int bottomMargin = 0;
    double ratio = 1;
    /// As they were presented.
    QList<QImage> pictures;

    void show(QSize wanted, int margin) override
    {
        size = wanted;
        bottomMargin = margin;
    }
    void hide() override { size.reset(); }
    double pixelRatio() const override { return ratio; }
    void present(const QImage &picture) override { pictures << picture.copy(); }

    void setPixelRatio(double changed)
    {
        ratio = changed;
        Q_EMIT pixelRatioChanged();
    }
};

} // namespace Velloro
