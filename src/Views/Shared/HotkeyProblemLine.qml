import QtQuick
import Velloro

/// That the hotkey can't be had, as wide as its text or `maximumWidth`.
Item {
    id: line

    property alias text: note.text
    property real maximumWidth: Infinity

    objectName: "hotkeyProblem"
    visible: text !== ""
    implicitWidth: mark.width + 6 + note.implicitWidth
    implicitHeight: note.height
    width: Math.min(implicitWidth, maximumWidth)

    Symbol {
        id: mark
        anchors.verticalCenter: note.verticalCenter
        name: "exclamationmark.triangle"
        size: Math.round(14 * Theme.textScale)
        color: Theme.orange
    }
    Note {
        id: note
        x: mark.width + 6
        width: Math.ceil(Math.min(implicitWidth, line.width - x))
        Accessible.role: Accessible.AlertMessage
    }
}
