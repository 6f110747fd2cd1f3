pragma ComponentBehavior: Bound
import QtQuick
import Velloro

/// Something is being worked on, for an unknown time.
Item {
    id: spinner

    property int phase: 0

    implicitWidth: 16
    implicitHeight: 16
    Accessible.role: Accessible.Animation
    Accessible.name: qsTr("Busy")

    Timer {
        interval: 100
        repeat: true
        running: spinner.visible && spinner.Window.visibility !== Window.Hidden
        onTriggered: spinner.phase = (spinner.phase + 1) % 8
    }

    Repeater {
        model: 8
        Item {
            id: spoke

            required property int index

            anchors.centerIn: parent
            width: 1.75
            height: spinner.height
            rotation: index * 45
            // The one at the phase is darkest, those behind it fade.
            opacity: 1 - ((spinner.phase - index + 8) % 8) * 0.11
            RoundedRectangle {
                width: parent.width
                height: parent.height * 0.29
                radius: width / 2
                color: Theme.secondary
            }
        }
    }
}
