#pragma once

#include "Core/DomainTypes.h"

namespace Velloro {

/// How the presets are shown beside their titles, which are their raw values.
namespace PresetPresentation {

/// What the preset is good for, in a word.
[[nodiscard]] QString label(ModelPreset preset);
/// The name of its symbol.
[[nodiscard]] QString symbol(ModelPreset preset);
/// The name of the theme's colour for it.
[[nodiscard]] QString tint(ModelPreset preset);

} // namespace PresetPresentation
} // namespace Velloro
