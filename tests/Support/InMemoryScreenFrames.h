#pragma once

#include "Platform/ScreenFrames.h"

namespace Velloro {

/// Knows no more than the toolkit.
class InMemoryScreenFrames : public ScreenFrames
{
public:
    std::optional<QRect> visibleFrame(const QRect & /*screen*/,
                                      double /*pixelRatio*/) const override
    {
        return std::nullopt;
    }
};

} // namespace Velloro
