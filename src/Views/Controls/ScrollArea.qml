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
    // A drag selects text and moves sliders elsewhere; the wheel and the bar scroll.
    interactive: contentHeight > height

    /// Brings an item into view, with the row around it that asks for it (`isRevealedWhole`).
    function reveal(item) {
        const top = item.mapToItem(contentItem, 0, 0).y
        const margin = 12
        if (top - margin < contentY)
            contentY = Math.max(0, top - margin)
        else if (top + item.height + margin > contentY + height)
            contentY = Math.min(Math.max(0, contentHeight - height),
                                top + item.height + margin - height)
    }

    Connections {
        target: area.Window.window
        function onActiveFocusItemChanged() {
            let item = area.Window.activeFocusItem
            for (let above = item; above; above = above.parent) {
                if (above.isRevealedWhole)
                    item = above
                if (above === area.contentItem) {
                    area.reveal(item)
                    return
                }
            }
        }
    }

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
        contentItem: Rectangle {
            implicitWidth: 6
            radius: 3
            color: Theme.faded(Theme.primary, bar.pressed ? 0.45 : bar.hovered ? 0.35 : 0.22)
        }
    }
}
