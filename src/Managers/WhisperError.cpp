#include "Managers/WhisperError.h"

namespace Velloro {

QString localizedDescription(WhisperError error)
{
    switch (error) {
    case WhisperError::modelNotFound:
        return QStringLiteral("Model file not found. Please download the model first.");
    case WhisperError::modelNotLoaded:
        return QStringLiteral("No model is loaded. Please load a model first.");
    case WhisperError::downloadFailed:
        return QStringLiteral("Failed to download the model.");
    case WhisperError::transcriptionFailed:
        return QStringLiteral("Transcription failed.");
    }
    Q_UNREACHABLE();
}

QString localizedDescription(const ModelLoadError &error)
{
    return std::visit([](auto cause) { return localizedDescription(cause); }, error);
}

} // namespace Velloro
