import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A preset and the menu with which a model is assigned to it.
Rectangle {
    id: row

    required property PresetConfigRowModel model

    implicitWidth: content.implicitWidth + 20
    implicitHeight: content.implicitHeight + 12
    radius: 6
    color: Theme.faded(Theme.primary, 0.05)
    Accessible.role: Accessible.Grouping
    Accessible.name: qsTr("%1, %2").arg(model.title).arg(model.label)

    RowLayout {
        id: content
        anchors.fill: parent
        anchors.leftMargin: 10
        anchors.rightMargin: 10
        spacing: 12

        Symbol {
            Layout.preferredWidth: size
            name: row.model.symbol
            size: Math.round(Theme.title2.pixelSize * 1.3)
            color: Theme.accent
        }
        ColumnLayout {
            spacing: 1
            ThemedText {
                text: row.model.title
                font: Theme.bodyMedium
            }
            ThemedText {
                text: row.model.label
                font: Theme.caption
                color: Theme.secondary
            }
        }
        Item { Layout.fillWidth: true }
        T.AbstractButton {
            id: button
            objectName: "assignedModel"

            Layout.maximumWidth: row.width * 0.6
            text: row.model.menuLabel
            font: Theme.body
            leftPadding: 10
            rightPadding: 8
            topPadding: 4
            bottomPadding: 4
            implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
            implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
            focusPolicy: Qt.StrongFocus
            hoverEnabled: true
            onClicked: menu.popup(button, 0, button.height + 2)
            Keys.onReturnPressed: clicked()
            Keys.onEnterPressed: clicked()
            Keys.onDownPressed: clicked()

            Accessible.role: Accessible.ButtonMenu
            Accessible.name: qsTr("Model of %1: %2").arg(row.model.title).arg(text)
            Accessible.onPressAction: clicked()

            contentItem: RowLayout {
                spacing: 6
                Text {
                    Layout.fillWidth: true
                    text: button.text
                    font: button.font
                    color: Theme.primary
                    elide: Text.ElideMiddle
                    textFormat: Text.PlainText
                }
                Symbol {
                    name: "chevron.up.chevron.down"
                    size: 12
                    color: Theme.secondary
                }
            }
            background: Rectangle {
                radius: 6
                color: Qt.tint(Theme.control, Theme.faded(Theme.primary, button.down ? 0.16
                                                          : button.hovered ? 0.08 : 0))
                border.width: 1
                border.color: Theme.controlBorder
                FocusRing { control: button; radius: 8 }
            }
        }
    }

    PopUpMenu {
        id: menu
        objectName: "menu"

        PopUpMenuItem {
            text: qsTr("Downloaded")
            font: Theme.caption
            textColor: Theme.secondary
            leftPadding: 10
            enabled: false
            Accessible.role: Accessible.Heading
        }
        PopUpMenuItem {
            text: qsTr("No models downloaded")
            textColor: Theme.tertiary
            enabled: false
            visible: row.model.downloadedModels.length === 0
            height: visible ? implicitHeight : 0
            Accessible.role: Accessible.StaticText
        }
        Instantiator {
            model: row.model.downloadedModels
            delegate: PopUpMenuItem {
                required property int index
                required property string modelData

                text: modelData
                checked: index === row.model.assignedIndex
                onTriggered: row.model.assign(index)
            }
            onObjectAdded: (index, object) => menu.insertItem(2 + index, object)
            onObjectRemoved: (index, object) => menu.removeItem(object)
        }
        PopUpMenuItem {
            text: qsTr("Not Downloaded")
            font: Theme.caption
            textColor: Theme.secondary
            leftPadding: 10
            enabled: false
            Accessible.role: Accessible.Heading
        }
        Instantiator {
            model: row.model.notDownloadedModels
            delegate: PopUpMenuItem {
                required property string modelData

                text: modelData
                textColor: Theme.tertiary
                enabled: false
                Accessible.role: Accessible.StaticText
            }
            onObjectAdded: (index, object) =>
                menu.insertItem(3 + row.model.downloadedModels.length + index, object)
            onObjectRemoved: (index, object) => menu.removeItem(object)
        }
    }
}
