#pragma once

#include "Platform/Linux/Desktop/DesktopLook.h"
#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Platform.h"

#include <memory>

namespace Velloro {

class WaylandConnection;

/// Puts what the compositor offers in the place of the services of the X server beside it. What it
/// does not offer stays as it is.
void addWaylandServices(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                        const std::shared_ptr<PasteCoordinator> &pasting);

/// The desktop's look, in place of what the X server beside the compositor tells.
[[nodiscard]] std::unique_ptr<DesktopLook>
makeWaylandLook(const std::shared_ptr<WaylandConnection> &display,
                std::unique_ptr<DesktopLook> x11);

} // namespace Velloro
