#pragma once

#include "Platform/PlatformError.h"

#include <QString>
#include <variant>

namespace Velloro {

/// Why capture could not start, by this program's own judgement.
enum class AudioCaptureError { engineNotInitialized, permissionDenied };

/// A start fails with our own error or with the platform's, passed on unchanged.
using CaptureStartError = std::variant<AudioCaptureError, PlatformError>;

/// The error in words, for the log.
[[nodiscard]] QString localizedDescription(const CaptureStartError &error);

} // namespace Velloro
