import QtQuick
import Velloro

/// The visible keyboard focus around `control`; a child of it or of its background.
Rectangle {
    id: ring

    property Item control: parent
    property real gap: 2

    anchors.fill: parent
    anchors.margins: -gap
    visible: control.visualFocus !== undefined ? control.visualFocus : control.activeFocus
    color: "transparent"
    radius: 6 + gap
    border.width: 2
    border.color: Theme.faded(Theme.accent, 0.75)
    z: 1
    Accessible.ignored: true
}
