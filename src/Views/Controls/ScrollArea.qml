import QtQuick
import QtQuick.Templates as T
import Velloro

/// Content that scrolls up and down and follows the keyboard focus.
Flickable {
    id: area

    readonly property real availableWidth: width

    clip: true
    contentWidth: width
    boundsBehavior: Flickable.StopAtBounds
    flickableDirection: Flickable.VerticalFlick
    // A finger drags the content; a mouse has its wheel and the bar.
    interactive: contentHeight > height && !mouse.active
    PointHandler { id: mouse; acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad }

    FocusFollower { view: area }

    T.ScrollBar.vertical: T.ScrollBar {
        id: bar
        parent: area
        anchors.right: area.right
        height: area.height
        implicitWidth: 10
        padding: 2
        visible: size < 1
        minimumSize: 0.1
        focusPolicy: Qt.NoFocus
        // The keyboard scrolls by what it focuses.
        Accessible.ignored: true
        contentItem: RoundedRectangle {
            implicitWidth: 6
            radius: 3
            color: Theme.faded(Theme.primary, bar.pressed ? 0.45 : bar.hovered ? 0.35 : 0.22)
        }
    }
}
