#pragma once

#include "Platform/ScreenFrames.h"

#include <QScreen>

namespace Velloro {

/// Frames as the toolkit knows them.
class InMemoryScreenFrames : public ScreenFrames
{
public:
    QRect visibleFrame(const QScreen &screen) const override { return screen.availableGeometry(); }
};

} // namespace Velloro
