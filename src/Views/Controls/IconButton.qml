import QtQuick
import QtQuick.Templates as T
import Velloro

/// A borderless button that is a symbol; `text` is its name, and its help where `help` is empty.
T.AbstractButton {
    id: control

    property string symbol
    property real symbolSize: Math.round(14 * Theme.textScale)
    property color color: Theme.secondary
    property bool hierarchical: false
    property string help: text
    /// It can't be undone. Such a button never gets the keyboard unless the user takes it there.
    property bool destroys: false

    implicitWidth: Math.max(24, symbolSize + leftPadding + rightPadding)
    implicitHeight: Math.max(24, symbolSize + topPadding + bottomPadding)
    padding: 4
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : 0.4

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.description: help === text ? "" : help
    Accessible.onPressAction: clicked()

    Keys.forwardTo: [activation]
    Activation { id: activation; button: control }

    contentItem: Item {
        Symbol {
            anchors.centerIn: parent
            name: control.symbol
            size: Math.round(control.symbolSize)
            color: control.color
            hierarchical: control.hierarchical
        }
    }
    background: RoundedRectangle {
        radius: 5
        color: control.down ? Theme.faded(Theme.primary, 0.16)
                            : control.hovered ? Theme.faded(Theme.primary, 0.08) : "transparent"
        FocusRing { control: control; gap: 0; radius: 5 }
    }

    HelpTip {
        text: control.help
        visible: control.help !== "" && (control.hovered || control.visualFocus)
    }
}
