#pragma once

#include "Core/Domain/DomainTypes.h"

namespace Velloro {

/// What the pill and the panel say about a state.
[[nodiscard]] QString statusText(TranscriptionState state);
/// The mode's name in the user's language.
[[nodiscard]] QString recordingModeText(RecordingMode mode);

} // namespace Velloro
