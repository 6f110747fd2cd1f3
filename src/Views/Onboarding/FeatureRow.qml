import QtQuick
import QtQuick.Layouts
import Velloro

/// One thing that Velloro does. No layout: one would keep the height that the texts had while there
/// was little room.
Item {
    id: row

    property string icon
    property string title
    property string description

    Layout.fillWidth: true
    implicitHeight: Math.max(symbol.height, texts.height)

    Symbol {
        id: symbol
        x: (Math.round(32 * Theme.growth) - width) / 2
        anchors.verticalCenter: parent.verticalCenter
        name: row.icon
        size: Math.round(Theme.title2.pixelSize * 1.25)
        color: Theme.accentText
    }
    Column {
        id: texts
        x: Math.round(32 * Theme.growth) + 16
        anchors.verticalCenter: parent.verticalCenter
        width: row.width - x
        spacing: 2
        ThemedText {
            width: parent.width
            text: row.title
            font: Theme.bodyMedium
            wrapMode: Text.WordWrap
        }
        Note {
            width: parent.width
            text: row.description
        }
    }
}
