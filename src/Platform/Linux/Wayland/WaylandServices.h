#pragma once

#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Platform.h"

#include <memory>

namespace Velloro {

class WaylandConnection;

/// Puts what the compositor offers in the place of the services of the X server beside it. What it
/// does not offer stays as it is.
void addWaylandServices(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                        const std::shared_ptr<PasteCoordinator> &pasting);

} // namespace Velloro
