import QtQuick
import Velloro

/// The visible keyboard focus around `control`; a child of it or of its background.
Rectangle {
    id: ring

    property Item control: parent
    property real gap: 2

    // Back from a menu or from another window, the focus is as visible as it was.
    property bool wasVisible: false
    readonly property bool isBack: control.focusReason === Qt.PopupFocusReason
        || control.focusReason === Qt.ActiveWindowFocusReason
    Connections {
        target: ring.control
        function onActiveFocusChanged() {
            if (ring.control.activeFocus && !ring.isBack)
                ring.wasVisible = ring.control.visualFocus ?? true
        }
    }

    anchors.fill: parent
    anchors.margins: -gap
    visible: control.activeFocus && ((control.visualFocus ?? true) || isBack && wasVisible)
    color: "transparent"
    radius: 6 + gap
    border.width: 2
    border.color: Theme.faded(Theme.accent, 0.75)
    z: 1
    Accessible.ignored: true
}
