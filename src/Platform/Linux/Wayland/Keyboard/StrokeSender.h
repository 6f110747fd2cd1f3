#pragma once

#include "Platform/Linux/Wayland/WaylandConnection.h"

#include <cstdint>
#include <memory>

namespace Velloro {

/// A way to press keys for the window in front.
class StrokeSender
{
public:
    /// A key together with modifiers. Keys are named by their places, as the kernel numbers them;
    /// what they mean does not depend on the user's layout where the sender can see to that.
    struct Stroke
    {
        uint32_t key = 0;
        bool isWithControl = false;
        bool isWithShift = false;
    };

    /// The best that the compositor offers; null where it lets nobody.
    [[nodiscard]] static std::unique_ptr<StrokeSender> make(WaylandConnection &connection);
    virtual ~StrokeSender() = default;

    /// Exactly these modifiers are held for the application, whatever the user holds. False where
    /// nothing was sent.
    [[nodiscard]] virtual bool press(const Stroke &stroke) = 0;
    virtual void release(const Stroke &stroke) = 0;
};

} // namespace Velloro
