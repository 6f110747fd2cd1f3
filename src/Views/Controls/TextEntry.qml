import QtQuick
import QtQuick.Templates as T
import Velloro

/// A field for one line of text with a round border. `accepted` is Return.
T.TextField {
    id: control

    /// What is entered, for the screen reader.
    property string label: placeholderText

    implicitWidth: 160
    implicitHeight: contentHeight + topPadding + bottomPadding
    leftPadding: 8
    rightPadding: 8
    topPadding: 5
    bottomPadding: 5
    font: Theme.body
    color: Theme.primary
    selectionColor: Theme.accent
    selectedTextColor: Theme.onAccent
    verticalAlignment: TextInput.AlignVCenter
    selectByMouse: true

    Accessible.role: Accessible.EditableText
    Accessible.name: label

    background: RoundedRectangle {
        radius: 6
        color: Theme.control
        borderWidth: control.activeFocus ? 2 : 1
        borderColor: control.activeFocus ? Theme.accent : Theme.controlBorder

        Text {
            x: control.leftPadding
            y: control.topPadding
            width: parent.width - control.leftPadding - control.rightPadding
            height: parent.height - control.topPadding - control.bottomPadding
            visible: control.text === "" && control.preeditText === ""
            text: control.placeholderText
            font: control.font
            color: Theme.tertiary
            elide: Text.ElideRight
            textFormat: Text.PlainText
            verticalAlignment: Text.AlignVCenter
        }
    }
}
