#pragma once

#include "Platform/Linux/Wayland/Keyboard/StrokeSender.h"

#include <QElapsedTimer>

struct zwp_virtual_keyboard_v1;

namespace Velloro {

/// A keyboard of this program's own beside the user's, with a layout of its own, so that its
/// strokes are the same on every layout. Modifiers that the user holds are not held on it.
class VirtualKeyboard final : public StrokeSender
{
public:
    /// Null where the compositor lets nobody have one.
    [[nodiscard]] static std::unique_ptr<VirtualKeyboard> make(WaylandConnection &connection);

    [[nodiscard]] bool press(const Stroke &stroke) override;
    void release(const Stroke &stroke) override;

private:
    explicit VirtualKeyboard(zwp_virtual_keyboard_v1 *keyboard);

    bool uploadKeymap();
    void sendKey(uint32_t key, bool isDown);

    WaylandHandle<zwp_virtual_keyboard_v1> m_keyboard;
    QElapsedTimer m_clock;
};

} // namespace Velloro
