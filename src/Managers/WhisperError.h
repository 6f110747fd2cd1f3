#pragma once

#include "Core/Recognition/WhisperContextError.h"

#include <QString>
#include <variant>

namespace Velloro {

/// Why the model manager could not do as asked.
enum class WhisperError { modelNotFound, modelNotLoaded, downloadFailed, transcriptionFailed };

[[nodiscard]] QString localizedDescription(WhisperError error);

/// A load fails with the manager's error or with the context's, passed on unchanged.
using ModelLoadError = std::variant<WhisperError, WhisperContextError>;

[[nodiscard]] QString localizedDescription(const ModelLoadError &error);

} // namespace Velloro
