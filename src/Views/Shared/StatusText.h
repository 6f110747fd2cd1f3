#pragma once

#include "Core/Domain/DomainTypes.h"

namespace Velloro {

/// What the pill and the panel say about a state.
[[nodiscard]] QString statusText(TranscriptionState state);
/// The mode's name in the user's language.
[[nodiscard]] QString recordingModeText(RecordingMode mode);
/// What part of a download is there, "42%"; `progress` is 0 to 1.
[[nodiscard]] QString percentText(double progress);

} // namespace Velloro
