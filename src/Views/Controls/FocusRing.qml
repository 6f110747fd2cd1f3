import QtQuick
import QtQuick.Templates as T
import Velloro

/// The visible keyboard focus around `control`; a child of it or of its background.
RoundedRectangle {
    id: ring

    property Item control: parent
    /// Where what has the focus is none of the toolkit's controls, the ring is always seen.
    readonly property T.Control asControl: control as T.Control
    readonly property bool isVisual: asControl ? asControl.visualFocus : true
    /// What is left free between the control and the ring, which could not be seen on the accent
    /// colour; where it is 0, the ring is drawn inside the control.
    property real gap: 2
    readonly property real reach: gap > 0 ? gap + borderWidth : 0

    // Back from a menu or from another window, the focus is as visible as it was.
    property bool wasVisible: false
    readonly property bool isBack: asControl && (asControl.focusReason === Qt.PopupFocusReason
                                                 || asControl.focusReason === Qt.ActiveWindowFocusReason)
    Connections {
        target: ring.control
        function onActiveFocusChanged() {
            if (ring.control.activeFocus && !ring.isBack)
                ring.wasVisible = ring.isVisual
        }
    }

    anchors.fill: parent
    anchors.margins: -reach
    visible: control.activeFocus && (isVisual || isBack && wasVisible)
    color: "transparent"
    radius: 6 + reach
    borderWidth: 2
    borderColor: Theme.accentText
    z: 1
    Accessible.ignored: true
}
