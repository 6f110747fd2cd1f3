#pragma once

#include "Models/WhisperModelInfo.h"

#include <span>

namespace Velloro {

/// The fixed catalogue of 28 speech models in whisper.cpp's ggml format.
namespace ModelCatalog {

/// The web address, ending with "/", from which every catalogue file is fetched by its file name.
[[nodiscard]] QString repositoryBaseUrl();

/// All rows: the seven full models, then the 21 quantized ones. Built on first use.
[[nodiscard]] std::span<const WhisperModelInfo> allModels();
[[nodiscard]] std::span<const WhisperModelInfo> fullModels();
[[nodiscard]] std::span<const WhisperModelInfo> quantizedModels();

/// The default model.
[[nodiscard]] const WhisperModelInfo &defaultModel();

/// The row with exactly this id, or null. The catalogue owns it.
[[nodiscard]] const WhisperModelInfo *modelById(QStringView id);

} // namespace ModelCatalog
} // namespace Velloro
