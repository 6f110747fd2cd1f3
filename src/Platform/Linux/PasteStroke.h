#pragma once

#include <QString>

namespace Velloro {

/// By which names a window says what it belongs to. On Wayland it has one: the application's id is
/// the class then.
struct WindowClass
{
    QString instance;
    QString name;

    friend bool operator==(const WindowClass &, const WindowClass &) = default;
};

/// The key strokes that paste.
enum class PasteStroke {
    controlV,      ///< Pastes the clipboard nearly everywhere.
    controlShiftV, ///< Pastes the clipboard in most terminals.
    shiftInsert,   ///< Pastes the primary selection, in some programs the clipboard.
};

/// What pastes in a window of this class. A focused element that is a terminal decides for classes
/// that are not known.
[[nodiscard]] PasteStroke pasteStroke(const WindowClass &windowClass,
                                      bool focusedElementIsTerminal);

/// Whether windows of this class are known here: a terminal or an editor, which takes text whatever
/// else is said of it.
[[nodiscard]] bool isKnownToPaste(const WindowClass &windowClass);

} // namespace Velloro
