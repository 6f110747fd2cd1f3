import QtQuick
import QtQuick.Layouts
import Velloro

/// A preset and the menu with which a model is assigned to it.
RoundedRectangle {
    id: row

    required property PresetConfigRowViewModel model

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
            color: Theme.accentText
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
        PopUpButton {
            objectName: "assignedModel"

            readonly property list<string> present: row.model.downloadedModels
            readonly property list<string> missing: row.model.notDownloadedModels

            Layout.maximumWidth: row.width * 0.6
            label: qsTr("Model of %1").arg(row.model.title)
            text: row.model.menuLabel
            elide: Text.ElideMiddle
            entries: [
                qsTr("Downloaded"), ...present,
                ...(present.length > 0 ? [] : [qsTr("No models downloaded")]),
                qsTr("Not Downloaded"), ...missing
            ]
            kinds: [
                PopUpMenuItem.Heading, ...Array(present.length).fill(PopUpMenuItem.Choice),
                ...(present.length > 0 ? [] : [PopUpMenuItem.Remark]),
                PopUpMenuItem.Heading, ...Array(missing.length).fill(PopUpMenuItem.Remark)
            ]
            currentIndex: row.model.assignedIndex < 0 ? -1 : row.model.assignedIndex + 1
            onActivated: index => row.model.assign(index - 1)
        }
    }
}
