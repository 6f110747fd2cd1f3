import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A line that opens what is under it. The owner decides whether it is open.
ColumnLayout {
    id: group

    property string title
    property string detail
    property bool isOpen: false
    /// Made when the group is open, dropped when it is closed.
    property Component content
    signal toggled()

    spacing: 6

    T.AbstractButton {
        id: header
        objectName: "header"

        Layout.fillWidth: true
        implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
        padding: 4
        text: group.title
        focusPolicy: Qt.StrongFocus
        onClicked: group.toggled()
        Keys.forwardTo: [activation]
        Activation {
            id: activation
            button: header
            keys: [Qt.Key_Return, Qt.Key_Enter, group.isOpen ? Qt.Key_Left : Qt.Key_Right]
        }

        Accessible.role: Accessible.Button
        Accessible.name: group.title
        Accessible.description: group.detail
        Accessible.checkable: true
        Accessible.checked: group.isOpen
        Accessible.onPressAction: clicked()
        Accessible.onToggleAction: clicked()

        contentItem: RowLayout {
            spacing: 6
            Symbol {
                name: group.isOpen ? "chevron.down" : "chevron.right"
                size: Math.round(12 * Theme.textScale)
                color: Theme.secondary
            }
            Text {
                text: group.title
                font: Theme.headline
                color: Theme.primary
                textFormat: Text.PlainText
            }
            Text {
                Layout.fillWidth: true
                text: group.detail
                font: Theme.caption
                color: Theme.secondary
                textFormat: Text.PlainText
            }
        }
        background: RoundedRectangle {
            radius: 5
            color: header.hovered ? Theme.faded(Theme.primary, 0.06) : "transparent"
            FocusRing { control: header; gap: 0; radius: 5 }
        }
    }
    Loader {
        Layout.fillWidth: true
        // In line with the title, a row's own margin left out.
        Layout.leftMargin: header.leftPadding + Math.round(12 * Theme.textScale) + 6 - 8
        active: group.isOpen
        visible: active
        sourceComponent: group.content
    }
}
