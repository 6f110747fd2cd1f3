import QtQuick
import QtQuick.Layouts
import Velloro

/// One thing that Velloro does.
RowLayout {
    id: row

    property string icon
    property string title
    property string description

    Layout.fillWidth: true
    spacing: 16

    Item {
        implicitWidth: 32
        implicitHeight: symbol.height
        Symbol {
            id: symbol
            anchors.centerIn: parent
            name: row.icon
            size: Math.round(Theme.title2.pixelSize * 1.25)
            color: Theme.accentText
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 2
        ThemedText {
            Layout.fillWidth: true
            text: row.title
            font: Theme.bodyMedium
            wrapMode: Text.WordWrap
        }
        Note {
            Layout.fillWidth: true
            text: row.description
        }
    }
}
