#pragma once

#include "Platform/Linux/PasteStroke.h"
#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <sys/types.h>

namespace Velloro {

/// The windows of all programs, as far as a compositor tells of them.
class WindowList
{
public:
    struct Window
    {
        /// Tells it from others, 0 for none.
        uint64_t number = 0;
        WindowClass windowClass;
        /// Nothing where the compositor does not tell.
        std::optional<pid_t> process;

        /// Whether it is this program's own.
        [[nodiscard]] bool isOwn() const;
    };

    /// The best that the compositor offers; null where it tells nobody.
    [[nodiscard]] static std::shared_ptr<WindowList>
    make(const std::shared_ptr<WaylandConnection> &connection);
    virtual ~WindowList() = default;

    /// False when nothing more will be told.
    [[nodiscard]] virtual bool isAlive() const = 0;
    /// The window that has the keyboard's focus; nothing when none has. Waits for the compositor, a
    /// tenth of a second at most; what was known before counts then.
    [[nodiscard]] virtual std::optional<Window> activeWindow() = 0;
};

} // namespace Velloro
