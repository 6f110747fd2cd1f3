#pragma once

#include "Platform/Platform.h"

#include <memory>

namespace Velloro {

class ShellExtension;
class WaylandConnection;
class WaylandKeymap;

/// Replaces the hotkey of the X server by the one that the desktop offers, and the key events of
/// the recorder where the toolkit draws without that server. `extension` is null where it can't
/// help.
void addWaylandHotkeys(Platform &platform, const std::shared_ptr<WaylandConnection> &display,
                       const std::shared_ptr<const WaylandKeymap> &keymap,
                       const std::shared_ptr<ShellExtension> &extension);

} // namespace Velloro
