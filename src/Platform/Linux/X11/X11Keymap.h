#pragma once

#include "Platform/Linux/X11/X11Connection.h"

#include <bitset>
#include <memory>
#include <optional>
#include <vector>
#include <xkbcommon/xkbcommon.h>

namespace Velloro {

/// Keycodes, as a set.
using KeySet = std::bitset<256>;

/// The keymap in force on the X server's core keyboard, read anew after each change.
class X11Keymap final : public QObject
{
    Q_OBJECT

public:
    explicit X11Keymap(std::shared_ptr<X11Connection> connection);
    ~X11Keymap() override;

    /// The keycode at the position of a virtual key code.
    [[nodiscard]] std::optional<uint8_t> keycodeAt(uint32_t virtualKeyCode);

    /// The keycode that gives `keysym` without Shift, in the layout group that is active if there
    /// is one, else in any group; `preferred` where that one does, too.
    [[nodiscard]] std::optional<uint8_t> keycodeFor(xkb_keysym_t keysym, uint8_t preferred = 0);

    /// The X modifiers to which a classic mask (Command 256, Shift 512, Option 2048, Control 4096)
    /// comes: Command is Super, Option is Alt. Nothing when one of them is on no key.
    [[nodiscard]] std::optional<uint16_t> modifierMask(uint32_t classicMask);

    /// The X modifiers that lock and say nothing about what the user holds: Caps, Num and Scroll
    /// Lock and their like.
    [[nodiscard]] uint16_t lockModifiers();

    /// The keys that act as modifiers while they are held; the locking ones are not among them.
    [[nodiscard]] KeySet heldModifierKeys();

    /// A key that sets this X modifier, for synthetic strokes.
    [[nodiscard]] std::optional<uint8_t> modifierKey(uint16_t modifier);

    /// A keycode that gives nothing at all.
    [[nodiscard]] std::optional<uint8_t> unassignedKeycode();

Q_SIGNALS:
    /// The keymap may be another one now.
    void changed();

private:
    struct Modifiers
    {
        /// The keys of each of the eight X modifiers, in the server's order.
        std::vector<uint8_t> keys[8];
    };
    struct KeymapUnref
    {
        void operator()(xkb_keymap *keymap) const { xkb_keymap_unref(keymap); }
    };

    void handleEvent(const xcb_generic_event_t *event);
    /// Reads keymap and modifiers if that has not been done since the last change.
    bool load();
    [[nodiscard]] bool gives(uint8_t keycode, xkb_layout_index_t group, xkb_keysym_t keysym) const;
    [[nodiscard]] bool hasAnySymbol(uint8_t keycode, std::initializer_list<xkb_keysym_t> keysyms) const;
    [[nodiscard]] uint16_t modifiersOf(std::initializer_list<xkb_keysym_t> keysyms) const;

    std::shared_ptr<X11Connection> m_connection;
    std::unique_ptr<xkb_keymap, KeymapUnref> m_keymap;
    Modifiers m_modifiers;
};

} // namespace Velloro
