#pragma once

#include "Platform/Linux/DisplayServer.h"
#include "Platform/Platform.h"

namespace Velloro {

class SingleInstance;

/// Makes the real services of a Linux desktop. Main thread, with an application object. The hotkey
/// follows the commands that `instance` receives, where there is one.
[[nodiscard]] Platform makeLinuxPlatform(DisplayServer server, SingleInstance *instance = nullptr);

} // namespace Velloro
