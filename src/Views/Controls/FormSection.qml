import QtQuick
import QtQuick.Layouts
import Velloro

/// A rounded group of rows under a title; the title is left out where it is empty.
ColumnLayout {
    id: section

    property string title
    property real rowSpacing: 10
    default property alias rows: column.data

    Layout.fillWidth: true
    spacing: 6
    Accessible.role: Accessible.Grouping
    Accessible.name: title

    ThemedText {
        Layout.leftMargin: 10
        visible: section.title !== ""
        text: section.title
        font: Theme.headline
        Accessible.role: Accessible.Heading
    }
    RoundedRectangle {
        Layout.fillWidth: true
        implicitHeight: column.implicitHeight + 20
        radius: 8
        color: Theme.group
        borderWidth: 1
        borderColor: Theme.separator

        ColumnLayout {
            id: column
            anchors.fill: parent
            anchors.margins: 10
            spacing: section.rowSpacing
        }
    }
}
