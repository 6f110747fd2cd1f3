import QtQuick
import Velloro

/// A word on a faint ground of its own colour.
RoundedRectangle {
    id: badge

    property alias text: label.text
    property alias font: label.font
    property color tint: Theme.accent
    property real groundOpacity: 0.2
    property real horizontalPadding: 6
    property real verticalPadding: 2

    implicitWidth: Math.ceil(label.implicitWidth) + 2 * horizontalPadding
    implicitHeight: Math.ceil(label.implicitHeight) + 2 * verticalPadding
    radius: height / 2
    color: Theme.faded(tint, groundOpacity)

    ThemedText {
        id: label
        anchors.centerIn: parent
        font: Theme.caption2
        color: Theme.legible(badge.tint, badge.color)
    }
}
