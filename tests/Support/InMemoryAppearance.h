#pragma once

#include "Platform/Appearance.h"

namespace Velloro {

/// A desktop that looks as it is told to.
class InMemoryAppearance : public Appearance
{
public:
    bool dark = false;
    std::optional<uint32_t> accent;
    double scale = 1;
    bool compositing = true;

    bool prefersDark() const override { return dark; }
    std::optional<uint32_t> accentColor() const override { return accent; }
    double textScale() const override { return scale; }
    bool isTrayDark() const override { return false; }
    bool isCompositing() const override { return compositing; }
};

} // namespace Velloro
