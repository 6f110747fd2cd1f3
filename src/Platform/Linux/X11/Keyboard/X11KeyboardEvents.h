#pragma once

#include "Platform/KeyboardEvents.h"
#include "Platform/Linux/PasteCoordinator.h"
#include "Platform/Linux/X11/Keyboard/X11Keyboards.h"
#include "Platform/Linux/X11/Keyboard/X11Keymap.h"
#include "Platform/Linux/X11/X11Workspace.h"

#include <QObject>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace Velloro {

/// Synthetic key strokes on an X server.
///
/// Modifiers that the user holds are released for the application before a stroke, and pressed
/// again after it if he still holds them.
class X11KeyboardEvents final : public QObject,
                                public KeyboardEvents,
                                private PasteCoordinator::Typist
{
    Q_OBJECT

public:
    /// Null without a connection: every post fails.
    X11KeyboardEvents(std::shared_ptr<X11Connection> connection,
                      std::shared_ptr<PasteCoordinator> pasting);
    /// Releases what is still pressed.
    ~X11KeyboardEvents() override;

    bool post(uint32_t keyCode, bool keyDown, uint64_t flags) override;
    void pause(std::chrono::microseconds duration) override;

    /// Waits half a second at most; not at all where nothing was sent, or the window can't tell.
    [[nodiscard]] bool awaitReceipt() override;

private:
    /// Keys that are pressed together.
    struct Chord
    {
        /// The modifiers first.
        std::vector<uint8_t> keys;
        /// The locks that would make other keys of these; lifted meanwhile.
        uint8_t locks = 0;
    };

    [[nodiscard]] std::optional<Chord> chord(uint32_t keyCode, uint64_t flags);
    /// The key together with these X modifiers, in the order in which they are pressed.
    [[nodiscard]] std::optional<Chord> chord(std::span<const uint16_t> modifiers, uint8_t key);
    [[nodiscard]] std::optional<Chord> pasteChord();
    /// What the paste stroke comes to on this keyboard; nothing where it can't be typed without
    /// changing the layout.
    [[nodiscard]] std::optional<Chord> chord(PasteStroke stroke);
    bool press(uint32_t keyCode, uint64_t flags);
    void release();
    /// Releases the modifiers that the applications see held, whoever holds them.
    void liftModifiers();
    /// Presses the lifted modifiers that are still held on a real keyboard.
    void restoreModifiers();
    /// Releases what was restored and is not held any more, so that nothing stays pressed on the
    /// device of synthetic strokes.
    void dropRestoredModifiers();
    void handleEvent(const xcb_generic_event_t *event);
    /// The active window, unless it is this program's own, which can't answer while we wait.
    [[nodiscard]] xcb_window_t othersWindow();

    std::shared_ptr<X11Connection> m_connection;
    std::shared_ptr<PasteCoordinator> m_pasting;
    std::unique_ptr<X11Keyboards> m_keyboards;
    /// The keymap of the device of synthetic strokes. A layout of the real keyboard's own is not in
    /// it, and the server makes it the one in force as soon as a stroke is sent.
    std::unique_ptr<X11Keymap> m_keymap;
    /// The keymap of the keyboard that was used last, which tells what the user's hands hold.
    std::unique_ptr<X11Keymap> m_keymapInForce;
    std::unique_ptr<X11Workspace> m_workspace;
    std::optional<Chord> m_pressed;
    uint32_t m_pressedKeyCode = 0;
    KeySet m_lifted;
    KeySet m_restored;
    /// Strokes were sent, and nobody has asked yet whether they were taken.
    bool m_hasUnconfirmedStrokes = false;
    uint32_t m_pings = 0;
    bool m_isPingAnswered = false;
};

} // namespace Velloro
