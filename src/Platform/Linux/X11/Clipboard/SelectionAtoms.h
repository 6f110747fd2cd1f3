#pragma once

#include <array>
#include <xcb/xcb.h>

namespace Velloro {

class X11Connection;

/// The names that programs use when they exchange what they have selected or copied.
struct SelectionAtoms
{
    explicit SelectionAtoms(X11Connection &connection);

    /// Whether the target is one of the forms of plain text.
    [[nodiscard]] bool isText(xcb_atom_t target) const;

    xcb_atom_t clipboard, targets, timestamp, multiple, utf8String, text, textPlain, textPlainUtf8,
        incr, atomPair, null, clipboardManager, saveTargets, deletion, insertSelection,
        insertProperty, passwordManagerHint;
    /// The forms in which, beside text, programs exchange most.
    std::array<xcb_atom_t, 4> copiedMost;
};

} // namespace Velloro
