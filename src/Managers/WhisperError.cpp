#include "Managers/WhisperError.h"

#include "Base/StringLiterals.h"

namespace Velloro {

QString localizedDescription(WhisperError error)
{
    switch (error) {
    case WhisperError::modelNotFound:
        return u"Model file not found. Please download the model first."_s;
    case WhisperError::modelNotLoaded:
        return u"No model is loaded. Please load a model first."_s;
    case WhisperError::downloadFailed:
        return u"Failed to download the model."_s;
    case WhisperError::transcriptionFailed:
        return u"Transcription failed."_s;
    }
    Q_UNREACHABLE();
}

QString localizedDescription(const ModelLoadError &error)
{
    return std::visit([](auto cause) { return localizedDescription(cause); }, error);
}

} // namespace Velloro
