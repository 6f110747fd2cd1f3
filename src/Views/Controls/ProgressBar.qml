import QtQuick
import QtQuick.Templates as T
import Velloro

/// A thin bar of how much is done, 0 to 1. `detail` says more, in a tip and to the screen reader.
T.ProgressBar {
    id: control

    property string detail
    /// The pointer is at the bar, or at what belongs to it.
    property bool isPointedAt: hovered

    implicitWidth: 60
    implicitHeight: 6
    // Not for its own sake, but the detail is to be had from the keyboard.
    focusPolicy: detail === "" && !activeFocus ? Qt.NoFocus : Qt.TabFocus

    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Progress")
    Accessible.description: detail

    background: RoundedRectangle {
        y: (control.height - height) / 2
        width: control.width
        height: 4
        radius: 2
        color: Theme.faded(Theme.primary, 0.14)
        FocusRing { control: control; gap: 4 }
    }
    HelpTip {
        text: control.detail
        visible: text !== "" && (control.isPointedAt || control.visualFocus)
    }
    contentItem: Item {
        RoundedRectangle {
            y: (parent.height - height) / 2
            width: Math.max(height, control.visualPosition * parent.width)
            height: 4
            radius: 2
            color: Theme.accent
            visible: control.visualPosition > 0
        }
    }
}
