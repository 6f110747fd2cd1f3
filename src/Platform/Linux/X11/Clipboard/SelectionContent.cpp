#include "Platform/Linux/X11/Clipboard/SelectionContent.h"

#include <algorithm>

namespace Velloro {

SelectionContent SelectionContent::ofText(const SelectionAtoms &atoms, const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    const QByteArray latin1 = text.toLatin1();
    const bool isLatin1 = std::ranges::all_of(text, [](QChar c) { return c.unicode() < 256; });
    return {{
        {atoms.utf8String, atoms.utf8String, 8, utf8},
        {atoms.textPlainUtf8, atoms.textPlainUtf8, 8, utf8},
        {atoms.text, isLatin1 ? xcb_atom_t(XCB_ATOM_STRING) : atoms.utf8String, 8,
         isLatin1 ? latin1 : utf8},
        {atoms.textPlain, atoms.textPlain, 8, utf8},
        {XCB_ATOM_STRING, XCB_ATOM_STRING, 8, latin1},
    }};
}

SelectionContent SelectionContent::ofPassingText(const SelectionAtoms &atoms, const QString &text)
{
    SelectionContent content = ofText(atoms, text);
    // The sign by which password managers keep their texts out of clipboard histories. It is one
    // more form: who does not know it does not ask for it.
    content.forms.push_back({atoms.passwordManagerHint, atoms.passwordManagerHint, 8, "secret"});
    return content;
}

const SelectionContent::Form *SelectionContent::form(xcb_atom_t target) const
{
    const auto found = std::ranges::find(forms, target, &Form::target);
    return found == forms.end() ? nullptr : &*found;
}

} // namespace Velloro
