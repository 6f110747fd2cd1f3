#pragma once

#include "Platform/ScreenFrames.h"

namespace Velloro {

/// Knows no more than the toolkit, or not even the places of windows.
class InMemoryScreenFrames : public ScreenFrames
{
public:
    /// Nothing where nobody knows it.
    std::optional<QPointF> pointerPosition = QPointF();
    bool placesWindows = true;

    std::optional<QRect> visibleFrame(const QRect & /*screen*/,
                                      double /*pixelRatio*/) const override
    {
        return std::nullopt;
    }
    std::optional<QPointF> pointer() const override { return pointerPosition; }
    bool canPlaceWindows() const override { return placesWindows; }
};

} // namespace Velloro
