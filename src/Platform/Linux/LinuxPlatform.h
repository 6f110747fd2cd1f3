#pragma once

#include "Platform/Linux/DisplayServer.h"
#include "Platform/Platform.h"

namespace Velloro {

/// Makes the real services of a Linux desktop. Main thread, with an application object.
[[nodiscard]] Platform makeLinuxPlatform(DisplayServer server);

} // namespace Velloro
