#pragma once

#include <QString>

namespace Velloro {

/// Why a model could not be loaded or used.
enum class WhisperContextError { modelNotFound, modelLoadFailed, transcriptionFailed, notReady };

/// The description that a user can be shown.
[[nodiscard]] QString localizedDescription(WhisperContextError error);

} // namespace Velloro
