#pragma once

#include "Platform/Linux/X11/Clipboard/SelectionAtoms.h"

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <vector>

namespace Velloro {

/// What a selection holds, in all the forms in which other programs can ask for it.
struct SelectionContent
{
    struct Form
    {
        xcb_atom_t target = XCB_ATOM_NONE;
        /// What the data is; may differ from what is asked for.
        xcb_atom_t type = XCB_ATOM_NONE;
        /// Bits of one unit of the data: 8, 16 or 32.
        uint8_t format = 8;
        /// As the X protocol lays it out: a unit of 32 bits takes four bytes.
        QByteArray data;

        friend bool operator==(const Form &, const Form &) = default;
    };

    /// A text, in every form of plain text.
    [[nodiscard]] static SelectionContent ofText(const SelectionAtoms &atoms, const QString &text);
    /// A text that stays for a moment only: clipboard histories are asked not to keep it.
    [[nodiscard]] static SelectionContent ofPassingText(const SelectionAtoms &atoms,
                                                        const QString &text);

    /// Null where it has no such form.
    [[nodiscard]] const Form *form(xcb_atom_t target) const;

    std::vector<Form> forms;
};

} // namespace Velloro
