#pragma once

#include "Platform/Linux/X11/Keyboard/X11Keymap.h"

#include <memory>
#include <optional>
#include <vector>

namespace Velloro {

/// The keyboards of the X server: which there are, which keys are down, and synthetic key strokes.
///
/// Three states of a key are told apart: down on a keyboard that the user's hands are on, down on
/// the device from which synthetic strokes come, and down as the applications see it.
class X11Keyboards
{
public:
    explicit X11Keyboards(std::shared_ptr<X11Connection> connection);

    /// The devices of real keyboards: all but the one of synthetic strokes. A keyboard whose grab
    /// is active is among them.
    [[nodiscard]] std::vector<uint16_t> physicalKeyboards() const;
    /// The devices of synthetic strokes, from which other programs' come as well: an on-screen
    /// keyboard's, those of remote access.
    [[nodiscard]] std::vector<uint16_t> syntheticKeyboards() const;
    /// The master keyboards, from which applications hear.
    [[nodiscard]] std::vector<uint16_t> masterKeyboards() const;

    /// The device of synthetic strokes that reach the core keyboard's applications.
    [[nodiscard]] std::optional<uint16_t> syntheticKeyboard() const;

    /// The keys that are down on any real keyboard.
    [[nodiscard]] KeySet physicallyHeld() const;
    /// The keys that are down on any keyboard, the one of synthetic strokes included.
    [[nodiscard]] KeySet heldOnAnyKeyboard() const;
    /// The keys that are down for the applications.
    [[nodiscard]] KeySet logicallyHeld() const;

    /// The X modifiers that are in force for the applications, whichever keyboard they come from.
    [[nodiscard]] uint8_t modifierState() const;
    /// Whether modifiers that were tapped hold for the next key, as the user has set it.
    [[nodiscard]] bool hasStickyKeys() const;

    /// Presses or releases a key on the device of synthetic strokes.
    void fakeKey(uint8_t keycode, bool down);
    /// Presses and releases it.
    void tap(uint8_t keycode);
    /// Locks these X modifiers for all applications, or unlocks them.
    void lockModifiers(uint8_t modifiers, bool locked);

private:
    struct Device
    {
        uint16_t id = 0;
        uint16_t master = 0;
        bool isSynthetic = false;
    };

    [[nodiscard]] std::vector<Device> slaveKeyboards() const;
    [[nodiscard]] std::vector<uint16_t> keyboards(bool areSynthetic) const;
    [[nodiscard]] KeySet heldOn(const std::vector<uint16_t> &devices) const;

    std::shared_ptr<X11Connection> m_connection;
};

} // namespace Velloro
