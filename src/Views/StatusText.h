#pragma once

#include "Core/DomainTypes.h"

namespace Velloro {

/// What the pill and the panel say about a state.
[[nodiscard]] QString statusText(TranscriptionState state);

} // namespace Velloro
