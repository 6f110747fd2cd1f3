#pragma once

#include "Platform/Linux/DisplayServer.h"
#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Platform.h"

#include <memory>

namespace Velloro {

class X11Connection;

/// Adds the services that an X server gives, which may be one beside a Wayland compositor. Without
/// a connection each of them says that it is unavailable.
void addX11Services(Platform &platform, DisplayServer server,
                    const std::shared_ptr<X11Connection> &display,
                    const std::shared_ptr<PasteCoordinator> &pasting);

} // namespace Velloro
