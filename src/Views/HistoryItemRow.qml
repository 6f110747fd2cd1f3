import QtQuick
import QtQuick.Layouts
import Velloro

/// One entry of the history: its beginning, when it was spoken, and a button that copies it.
FocusScope {
    id: row

    required property int index
    required property string preview
    required property string time
    required property bool copied
    readonly property Item action: copyButton

    /// How the keyboard reaches the button.
    property int policy: Qt.StrongFocus
    signal copyRequested()
    signal focused()
    signal keyPressed(var event)

    implicitHeight: content.implicitHeight + 24
    Accessible.role: Accessible.ListItem
    Accessible.name: preview
    Accessible.description: time

    Rectangle {
        anchors.fill: parent
        radius: 8
        color: Theme.faded(Theme.primary, 0.05)
    }
    RowLayout {
        id: content
        anchors.fill: parent
        anchors.margins: 12
        spacing: 12

        ColumnLayout {
            Layout.fillWidth: true
            Layout.alignment: Qt.AlignTop
            spacing: 4
            ThemedText {
                objectName: "text"
                Layout.fillWidth: true
                text: row.preview
                wrapMode: Text.Wrap
                maximumLineCount: 3
                elide: Text.ElideRight
            }
            ThemedText {
                objectName: "time"
                text: row.time
                font: Theme.caption2
                color: Theme.tertiary
            }
        }
        IconButton {
            id: copyButton
            objectName: "copy"
            Layout.alignment: Qt.AlignTop
            focus: true
            focusPolicy: activeFocus ? Qt.StrongFocus : row.policy
            padding: 3
            symbol: row.copied ? "checkmark" : "doc.on.doc"
            symbolSize: Math.round(Theme.caption.pixelSize * 1.2)
            color: row.copied ? Theme.green : Theme.secondary
            text: row.copied ? qsTr("Copied") : qsTr("Copy")
            onClicked: row.copyRequested()
            onActiveFocusChanged: if (activeFocus) row.focused()
            Keys.onPressed: event => row.keyPressed(event)

            Behavior on color { ColorAnimation { duration: 200; easing.type: Easing.InOutQuad } }
        }
    }
}
