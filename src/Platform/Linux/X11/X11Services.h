#pragma once

#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Platform.h"

#include <memory>

namespace Velloro {

class X11Connection;

/// Adds the services that an X server gives. Without a connection each of them says that it is
/// unavailable.
void addX11Services(Platform &platform, const std::shared_ptr<X11Connection> &display,
                    const std::shared_ptr<PasteCoordinator> &pasting);

} // namespace Velloro
