import QtQuick
import QtQuick.Layouts
import Velloro

/// The history pane: what was dictated, newest first.
Item {
    id: pane

    required property HistoryViewModel model

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("History")

    ColumnLayout {
        anchors.centerIn: parent
        visible: pane.model.isEmpty
        spacing: 12
        Symbol {
            Layout.alignment: Qt.AlignHCenter
            name: "clock.arrow.circlepath"
            size: Math.round(48 * Theme.growth)
            color: Theme.tertiary
        }
        ThemedText {
            Layout.alignment: Qt.AlignHCenter
            text: qsTr("No transcriptions yet")
            font: Theme.headline
            color: Theme.secondary
        }
        ThemedText {
            Layout.alignment: Qt.AlignHCenter
            text: qsTr("Your transcription history will appear here")
            font: Theme.caption
            color: Theme.tertiary
        }
    }

    ColumnLayout {
        anchors.fill: parent
        visible: !pane.model.isEmpty
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: Theme.padding
            ThemedText {
                text: qsTr("History")
                font: Theme.headline
                Accessible.role: Accessible.Heading
            }
            Item { Layout.fillWidth: true }
            CapsuleButton {
                objectName: "clearAll"
                kind: CapsuleButton.Borderless
                size: CapsuleButton.Small
                tint: Theme.red
                destroys: true
                text: qsTr("Clear All")
                onClicked: pane.model.clear()
            }
        }
        Divider { Layout.fillWidth: true }
        ActionList {
            id: list
            objectName: "entries"
            Layout.fillWidth: true
            Layout.fillHeight: true
            topMargin: Theme.padding
            bottomMargin: Theme.padding
            spacing: 8
            model: pane.model
            Accessible.name: qsTr("History")

            delegate: HistoryItemRow {
                id: entry
                x: Theme.padding
                width: list.width - 2 * Theme.padding
                isStop: list.isStop(index)
                onHasKeyboardChanged: list.follow(entry)
                onIndexChanged: list.follow(entry)
                onKeyPressed: event => list.navigate(event)
                onCopyRequested: pane.model.copy(index)
            }
        }
    }
}
