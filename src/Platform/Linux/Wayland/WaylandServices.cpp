#include "Platform/Linux/Wayland/WaylandServices.h"

#include "Platform/Linux/Wayland/WaylandConnection.h"

namespace Velloro {

void addWaylandServices(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                        const std::shared_ptr<PasteCoordinator> &pasting)
{
    (void)platform;
    (void)pasting;
    if (!display)
        return;
}

} // namespace Velloro
