#include "Core/Recognition/WhisperContextError.h"

namespace Velloro {

QString localizedDescription(WhisperContextError error)
{
    switch (error) {
    case WhisperContextError::modelNotFound:
        return QStringLiteral("Model file not found");
    case WhisperContextError::modelLoadFailed:
        return QStringLiteral("Failed to load whisper model");
    case WhisperContextError::transcriptionFailed:
        return QStringLiteral("Transcription failed");
    case WhisperContextError::notReady:
        return QStringLiteral("Whisper context not ready");
    }
    return {};
}

} // namespace Velloro
