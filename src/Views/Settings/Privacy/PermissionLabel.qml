import QtQuick
import Velloro

/// That a permission is granted.
Row {
    spacing: 4
    Accessible.role: Accessible.StaticText
    Accessible.name: label.text

    Symbol {
        anchors.verticalCenter: parent.verticalCenter
        name: "checkmark.circle.fill"
        size: Math.round(14 * Theme.textScale)
        color: Theme.green
    }
    ThemedText {
        id: label
        anchors.verticalCenter: parent.verticalCenter
        text: qsTr("Granted")
        color: Theme.green
        Accessible.ignored: true
    }
}
