import QtQuick
import Velloro

/// One entry of the history: its beginning, when it was spoken, and a button that copies it.
FocusScope {
    id: row

    required property int index
    required property string preview
    required property string time
    required property bool copied
    readonly property Item action: copyButton

    readonly property bool isRevealedWhole: true
    readonly property bool hasKeyboard: copyButton.activeFocus
    /// Tab reaches the button.
    property bool isStop: true
    signal copyRequested()
    signal keyPressed(var event)

    implicitHeight: Math.max(when.y + when.height, copyButton.y + copyButton.height) + 12
    Accessible.role: Accessible.ListItem
    Accessible.name: preview
    Accessible.description: time

    RoundedRectangle {
        anchors.fill: parent
        radius: 8
        color: Theme.faded(Theme.primary, 0.05)
    }
    // No layout: one would give the row its height only after the list has been positioned by it.
    ThemedText {
        id: words
        objectName: "text"
        x: 12
        y: 12
        width: copyButton.x - 12 - x
        text: row.preview
        wrapMode: Text.Wrap
        maximumLineCount: 3
        elide: Text.ElideRight
    }
    ThemedText {
        id: when
        objectName: "time"
        x: 12
        y: words.y + words.height + 4
        text: row.time
        font: Theme.caption2
        color: Theme.tertiary
    }
    IconButton {
        id: copyButton
        objectName: "copy"
        x: row.width - 12 - width
        y: 12
        focus: true
        focusPolicy: row.hasKeyboard || row.isStop ? Qt.StrongFocus : Qt.ClickFocus
        padding: 3
        symbol: row.copied ? "checkmark" : "doc.on.doc"
        symbolSize: Math.round(Theme.caption.pixelSize * 1.2)
        color: row.copied ? Theme.green : Theme.secondary
        text: row.copied ? qsTr("Copied") : qsTr("Copy")
        onClicked: row.copyRequested()
        Keys.onPressed: event => row.keyPressed(event)

        Behavior on color { ColorAnimation { duration: 200; easing.type: Easing.InOutQuad } }
    }
}
