#pragma once

#include "Platform/Linux/X11/Keyboard/X11Keymap.h"
#include "Platform/UserInput.h"

#include <QObject>
#include <array>
#include <memory>

namespace Velloro {

/// The user's presses on an X server, on-screen keyboards and other programs' synthetic keys
/// included. A key that no application hears of, because the hotkey is held on its keyboard, does
/// not count.
///
/// What is left out is told by the connection: it has to be the one of the hotkeys and of this
/// program's own strokes.
class X11UserInput final : public QObject, public UserInput
{
    Q_OBJECT

public:
    /// A null connection counts nothing.
    explicit X11UserInput(std::shared_ptr<X11Connection> connection);

    void follow() override;
    void unfollow() override;
    [[nodiscard]] bool isTold() const override { return m_connection && m_connection->isAlive(); }
    /// Waits for the X server, and hands on every event that has arrived.
    [[nodiscard]] uint64_t presses() override;

private:
    void handleEvent(const xcb_generic_event_t *event);
    void handleKey(uint8_t keycode);
    void leaveOut(uint8_t keycode);

    std::shared_ptr<X11Connection> m_connection;
    std::unique_ptr<X11Keymap> m_keymap;
    bool m_isFollowing = false;
    uint64_t m_presses = 0;
    /// Presses of this program's own that the server has yet to tell of.
    std::array<unsigned, 256> m_ownKeys{};
};

} // namespace Velloro
