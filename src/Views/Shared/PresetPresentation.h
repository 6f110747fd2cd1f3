#pragma once

#include "Core/Domain/DomainTypes.h"

namespace Velloro {

/// How the presets are shown.
namespace PresetPresentation {

/// Its name in the user's language.
[[nodiscard]] QString title(ModelPreset preset);
/// What the preset is good for, in a word.
[[nodiscard]] QString label(ModelPreset preset);
/// The name of its symbol.
[[nodiscard]] QString symbol(ModelPreset preset);
/// The name of the theme's colour for it.
[[nodiscard]] QString tint(ModelPreset preset);

} // namespace PresetPresentation
} // namespace Velloro
