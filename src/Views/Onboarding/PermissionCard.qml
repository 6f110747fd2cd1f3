import QtQuick
import QtQuick.Layouts
import Velloro

/// A permission, whether it is granted, and the button that asks for it.
RoundedRectangle {
    id: card

    property string icon
    property string title
    property string description
    property bool isGranted: false
    property bool isRequired: false
    signal action()

    Layout.fillWidth: true
    implicitHeight: row.implicitHeight + 2 * Theme.padding
    radius: 12
    color: Theme.quaternary
    Accessible.role: Accessible.Grouping
    Accessible.name: title
    Accessible.description: description

    RowLayout {
        id: row
        anchors.fill: parent
        anchors.margins: Theme.padding
        spacing: 8

        Item {
            implicitWidth: Math.round(40 * Theme.growth)
            implicitHeight: symbol.height
            Symbol {
                id: symbol
                anchors.centerIn: parent
                name: card.icon
                size: Math.round(Theme.title2.pixelSize * 1.25)
                color: card.isGranted ? Theme.green : Theme.accentText
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            RowLayout {
                spacing: 8
                ThemedText {
                    text: card.title
                    font: Theme.bodyMedium
                }
                Badge {
                    visible: card.isRequired
                    text: qsTr("Required")
                    tint: Theme.red
                }
            }
            Note {
                Layout.fillWidth: true
                text: card.description
            }
        }
        Symbol {
            visible: card.isGranted
            name: "checkmark.circle.fill"
            size: Math.round(Theme.title2.pixelSize * 1.25)
            color: Theme.green
            Accessible.role: Accessible.StaticText
            Accessible.name: qsTr("Granted")
        }
        CapsuleButton {
            objectName: "enable"
            visible: !card.isGranted
            kind: CapsuleButton.Prominent
            size: CapsuleButton.Small
            text: qsTr("Enable")
            Accessible.description: card.title
            onClicked: card.action()
        }
    }
}
