#pragma once

#include <QString>
#include <span>

namespace Velloro {

/// The four fixed model families of the just-in-time load.
enum class WhisperModelType { tiny, base, small, medium };

/// The case name, which is the catalogue id of a full model.
[[nodiscard]] QString modelId(WhisperModelType type);

/// All cases in declaration order.
[[nodiscard]] std::span<const WhisperModelType> allWhisperModelTypes();

} // namespace Velloro
