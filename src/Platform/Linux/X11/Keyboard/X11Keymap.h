#pragma once

#include "Base/CustomDelete.h"
#include "Platform/Linux/X11/Keyboard/KeyboardSimulation.h"
#include "Platform/Linux/X11/X11Connection.h"

#include <array>
#include <bitset>
#include <memory>
#include <optional>
#include <span>
#include <vector>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

/// Keycodes, as a set.
using KeySet = std::bitset<256>;

/// The keymap of a keyboard of the X server, read anew after each change.
class X11Keymap final : public QObject
{
    Q_OBJECT

public:
    /// The keymap in force on the core keyboard, which is that of the keyboard used last.
    explicit X11Keymap(std::shared_ptr<X11Connection> connection);
    /// The keymap of one keyboard, whichever is in force.
    X11Keymap(std::shared_ptr<X11Connection> connection, uint16_t device);
    ~X11Keymap() override;

    /// The keycode at the position of a virtual key code.
    [[nodiscard]] std::optional<uint8_t> keycodeAt(uint32_t virtualKeyCode);

    /// What is locked for the applications at present.
    [[nodiscard]] KeyboardLocks locks();

    /// The keycode that gives `keysym` without Shift in the layout that is locked; `preferred`
    /// where that one does, too.
    [[nodiscard]] std::optional<uint8_t> keycodeInLayout(xkb_keysym_t keysym,
                                                         uint8_t preferred = 0);
    /// The same; where the locked layout has none, the keycode that gives it in any other.
    [[nodiscard]] std::optional<uint8_t> keycodeFor(xkb_keysym_t keysym, uint8_t preferred = 0);

    /// The X modifiers to which a classic mask (Command 256, Shift 512, Option 2048, Control 4096)
    /// comes: Command is Super, Option is Alt. Nothing when one of them is on no key.
    [[nodiscard]] std::optional<uint16_t> modifierMask(uint32_t classicMask);

    /// The X modifiers that lock and say nothing about what the user holds: Caps, Num and Scroll
    /// Lock and their like.
    [[nodiscard]] uint16_t lockModifiers();

    /// Whether a state of the X modifiers has one that no classic mask comes to, such as that of
    /// AltGr, and that is held or latched, not locked.
    [[nodiscard]] bool holdsOtherModifier(uint8_t state);

    /// The keys that act as modifiers while they are held, in any layout; the locking ones are not
    /// among them.
    [[nodiscard]] KeySet heldModifierKeys();

    /// Keys that set these X modifiers, each one of them and in this order, if they are pressed
    /// together while this is locked. Nothing where all such keys set others, or change the layout
    /// or a lock.
    [[nodiscard]] std::optional<std::vector<uint8_t>>
    modifierKeys(std::span<const uint16_t> modifiers, const KeyboardLocks &locks);

    /// All keys that set one of these X modifiers.
    [[nodiscard]] KeySet modifierKeys(uint16_t modifiers);

    /// A key that is Control whatever else is held, and switches no layout.
    [[nodiscard]] std::optional<uint8_t> plainControlKey();

    /// A keycode that gives nothing at all.
    [[nodiscard]] std::optional<uint8_t> unassignedKeycode();

Q_SIGNALS:
    /// The keymap may be another one now.
    void changed();

private:
    void handleEvent(const xcb_generic_event_t *event);
    /// Reads keymap and modifiers if that has not been done since the last change.
    bool load();
    /// Reads which X modifiers stand for which keys.
    bool loadModifierMap(uint16_t device);
    [[nodiscard]] std::vector<uint8_t> keycodes() const;
    [[nodiscard]] bool isHeldModifier(uint8_t keycode) const;
    [[nodiscard]] bool gives(uint8_t keycode, xkb_layout_index_t group, xkb_keysym_t keysym) const;
    /// Adds keys for the rest of the modifiers; false, and adds nothing, where there are none.
    [[nodiscard]] bool addModifierKeys(std::vector<uint8_t> &keys,
                                       std::span<const uint16_t> modifiers,
                                       const KeyboardLocks &locks) const;
    [[nodiscard]] bool hasAnySymbol(uint8_t keycode,
                                    std::initializer_list<xkb_keysym_t> keysyms) const;
    [[nodiscard]] bool hasOnlySymbols(uint8_t keycode,
                                      std::initializer_list<xkb_keysym_t> keysyms) const;
    [[nodiscard]] uint16_t modifiersOf(std::initializer_list<xkb_keysym_t> keysyms) const;

    std::shared_ptr<X11Connection> m_connection;
    uint16_t m_device;
    std::unique_ptr<xkb_keymap, CustomDelete<xkb_keymap_unref>> m_keymap;
    /// The X modifiers of each key.
    std::array<uint8_t, 256> m_modifierMap{};
};

} // namespace Velloro
