import QtQuick
import QtQuick.Templates as T
import Velloro

/// A thin bar of how much is done, 0 to 1.
T.ProgressBar {
    id: control

    implicitWidth: 60
    implicitHeight: 6

    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("Progress")

    background: Rectangle {
        y: (control.height - height) / 2
        width: control.width
        height: 4
        radius: 2
        color: Theme.faded(Theme.primary, 0.14)
    }
    contentItem: Item {
        Rectangle {
            y: (parent.height - height) / 2
            width: Math.max(height, control.visualPosition * parent.width)
            height: 4
            radius: 2
            color: Theme.accent
            visible: control.visualPosition > 0
        }
    }
}
