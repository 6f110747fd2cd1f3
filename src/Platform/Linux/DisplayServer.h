#pragma once

namespace Velloro {

/// What draws the desktop and hands out the keys.
enum class DisplayServer {
    x11,
    wayland,
};

/// The display server of this session: Wayland where a compositor answers, whatever an X server
/// beside it offers. Has the toolkit draw by what suits that best, unless the user has chosen for
/// it. Before there is an application object.
[[nodiscard]] DisplayServer chooseDisplayServer();

} // namespace Velloro
