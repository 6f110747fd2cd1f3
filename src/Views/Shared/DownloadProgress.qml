import QtQuick
import QtQuick.Layouts
import Velloro

/// How far a download is: a bar with its percentage beside or, `isStacked`, below it.
Item {
    id: download

    required property real progress
    required property string percentText
    /// More about it, in a tip and for the screen reader.
    property string detail
    /// What is downloaded, for the screen reader.
    property string label: qsTr("Progress")
    property bool isStacked: false
    property alias barWidth: bar.implicitWidth
    property alias font: percent.font
    property alias color: percent.color
    /// Room at the right.
    property real margin: 0
    readonly property Item action: bar

    implicitWidth: grid.implicitWidth + margin
    implicitHeight: grid.implicitHeight

    GridLayout {
        id: grid
        columns: download.isStacked ? 1 : 2
        columnSpacing: 6
        rowSpacing: 8
        ProgressBar {
            id: bar
            value: download.progress
            detail: download.detail
            isPointedAt: hover.hovered
            Accessible.name: download.label
        }
        ThemedText {
            id: percent
            objectName: "percent"
            // The digits don't dance: each is as wide as any other.
            Layout.minimumWidth: download.isStacked ? 0 : Math.ceil(widest.advanceWidth)
            Layout.alignment: download.isStacked ? Qt.AlignHCenter : Qt.AlignVCenter
            text: download.percentText
            font: Theme.caption
            horizontalAlignment: Text.AlignRight
            TextMetrics {
                id: widest
                font: percent.font
                text: "100%"
            }
        }
    }
    HoverHandler { id: hover }
}
