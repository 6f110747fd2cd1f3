#include "Managers/AudioCaptureError.h"

namespace Velloro {

QString localizedDescription(const CaptureStartError &error)
{
    if (const auto *platformError = std::get_if<PlatformError>(&error))
        return platformError->description();
    switch (std::get<AudioCaptureError>(error)) {
    case AudioCaptureError::engineNotInitialized:
        return QStringLiteral("The audio engine could not be created");
    case AudioCaptureError::permissionDenied:
        return QStringLiteral("The microphone may not be recorded");
    }
    return {};
}

} // namespace Velloro
