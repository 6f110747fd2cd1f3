#pragma once

#include "Platform/KeyboardEvents.h"
#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Linux/Wayland/Keyboard/StrokeSender.h"
#include "Platform/Linux/Wayland/Windows/WindowList.h"

#include <memory>
#include <optional>

namespace Velloro {

/// Synthetic key strokes under a Wayland compositor: the paste stroke and the backspace, no others.
class WaylandKeyboardEvents final : public KeyboardEvents, private PasteCoordinator::Typist
{
public:
    /// `connection` is the one that `sender` was made with. Without `windows` every window is taken
    /// for one of an unknown class; with them nothing is sent while none has the focus.
    WaylandKeyboardEvents(std::shared_ptr<WaylandConnection> connection,
                          std::unique_ptr<StrokeSender> sender, std::shared_ptr<WindowList> windows,
                          std::shared_ptr<PasteCoordinator> pasting);
    /// Releases what is still pressed.
    ~WaylandKeyboardEvents() override;

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override;
    void pause(std::chrono::microseconds duration) override;

    /// Waits until the compositor has passed the strokes on, half a second at most. What becomes of
    /// them in the window nobody can tell.
    [[nodiscard]] bool awaitReceipt() override;

private:
    [[nodiscard]] std::optional<StrokeSender::Stroke> stroke(uint32_t keyCode, uint64_t flags);
    [[nodiscard]] std::optional<StrokeSender::Stroke> pasteStroke();
    bool press(uint32_t keyCode, uint64_t flags);
    void release();

    std::shared_ptr<WaylandConnection> m_connection;
    std::unique_ptr<StrokeSender> m_sender;
    std::shared_ptr<WindowList> m_windows;
    std::shared_ptr<PasteCoordinator> m_pasting;
    std::optional<StrokeSender::Stroke> m_pressed;
    uint32_t m_pressedKeyCode = 0;
    /// Strokes were sent, and nobody has asked yet whether they were taken.
    bool m_hasUnconfirmedStrokes = false;
};

} // namespace Velloro
