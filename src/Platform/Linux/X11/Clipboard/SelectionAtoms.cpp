#include "Platform/Linux/X11/Clipboard/SelectionAtoms.h"

#include "Platform/Linux/X11/X11Connection.h"

namespace Velloro {

SelectionAtoms::SelectionAtoms(X11Connection &connection)
    : clipboard(connection.atom("CLIPBOARD"))
    , targets(connection.atom("TARGETS"))
    , timestamp(connection.atom("TIMESTAMP"))
    , multiple(connection.atom("MULTIPLE"))
    , utf8String(connection.atom("UTF8_STRING"))
    , text(connection.atom("TEXT"))
    , textPlain(connection.atom("text/plain"))
    , textPlainUtf8(connection.atom("text/plain;charset=utf-8"))
    , incr(connection.atom("INCR"))
    , atomPair(connection.atom("ATOM_PAIR"))
    , null(connection.atom("NULL"))
    , clipboardManager(connection.atom("CLIPBOARD_MANAGER"))
    , saveTargets(connection.atom("SAVE_TARGETS"))
    , deletion(connection.atom("DELETE"))
    , insertSelection(connection.atom("INSERT_SELECTION"))
    , insertProperty(connection.atom("INSERT_PROPERTY"))
    , passwordManagerHint(connection.atom("x-kde-passwordManagerHint"))
    , copiedMost{connection.atom("text/html"), connection.atom("image/png"),
                 connection.atom("text/uri-list"), connection.atom("x-special/gnome-copied-files")}
{
}

bool SelectionAtoms::isText(xcb_atom_t target) const
{
    return target == utf8String || target == textPlainUtf8 || target == textPlain || target == text
        || target == XCB_ATOM_STRING;
}

} // namespace Velloro
