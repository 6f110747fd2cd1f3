#include "Core/Recognition/WhisperContextError.h"

#include "Base/StringLiterals.h"

namespace Velloro {

QString localizedDescription(WhisperContextError error)
{
    switch (error) {
    case WhisperContextError::modelNotFound:
        return u"Model file not found"_s;
    case WhisperContextError::modelLoadFailed:
        return u"Failed to load whisper model"_s;
    case WhisperContextError::transcriptionFailed:
        return u"Transcription failed"_s;
    case WhisperContextError::notReady:
        return u"Whisper context not ready"_s;
    }
    return {};
}

} // namespace Velloro
