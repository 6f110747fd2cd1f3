#include "Managers/AudioCaptureError.h"

#include "Base/StringLiterals.h"

namespace Velloro {

QString localizedDescription(const CaptureStartError &error)
{
    if (const auto *platformError = std::get_if<PlatformError>(&error))
        return platformError->description();
    switch (std::get<AudioCaptureError>(error)) {
    case AudioCaptureError::engineNotInitialized:
        return u"The audio engine could not be created"_s;
    case AudioCaptureError::permissionDenied:
        return u"The microphone may not be recorded"_s;
    }
    return {};
}

} // namespace Velloro
