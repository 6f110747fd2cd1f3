#pragma once

#include "Platform/ScreenFrames.h"

#include <QCursor>

namespace Velloro {

/// Knows no more than the toolkit, or not even the pointer.
class InMemoryScreenFrames : public ScreenFrames
{
public:
    bool tellsPointer = true;

    std::optional<QRect> visibleFrame(const QRect & /*screen*/,
                                      double /*pixelRatio*/) const override
    {
        return std::nullopt;
    }
    std::optional<QPointF> pointer() const override
    {
        return tellsPointer ? std::optional<QPointF>(QCursor::pos()) : std::nullopt;
    }
};

} // namespace Velloro
