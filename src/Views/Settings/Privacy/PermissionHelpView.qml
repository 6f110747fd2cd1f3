import QtQuick
import QtQuick.Layouts
import Velloro

/// What to do for a permission, step by step.
FocusScope {
    id: view

    required property PermissionHelpViewModel model

    implicitWidth: Math.round(420 * Theme.growth)
    implicitHeight: content.implicitHeight + 40
    Accessible.role: Accessible.Dialog
    Accessible.name: model.title

    /// For the button that does it, or the one that closes when all is done.
    function takeKeyboard(reason) {
        (view.model.isGranted ? close : act).forceActiveFocus(reason)
    }

    Shortcut {
        sequence: "Escape"
        onActivated: view.model.close()
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }

    ScrollArea {
        id: area
        anchors.fill: parent
        contentHeight: content.implicitHeight + 40

        ColumnLayout {
            id: content
            x: 20
            y: 20
            width: area.width - 40
            spacing: 12

            RowLayout {
                spacing: 10
                Symbol {
                    name: view.model.symbol
                    size: Math.round(26 * Theme.textScale)
                    color: Theme.accentText
                }
                ThemedText {
                    text: view.model.title
                    font: Theme.title2
                    Accessible.role: Accessible.Heading
                }
            }
            ThemedText {
                Layout.fillWidth: true
                text: view.model.explanation
                wrapMode: Text.WordWrap
            }
            Repeater {
                model: view.model.steps
                RowLayout {
                    id: step

                    required property int index
                    required property string modelData

                    Layout.fillWidth: true
                    spacing: 8
                    ThemedText {
                        Layout.alignment: Qt.AlignTop
                        text: qsTr("%1.").arg(step.index + 1)
                        color: Theme.secondary
                    }
                    ThemedText {
                        Layout.fillWidth: true
                        text: step.modelData
                        wrapMode: Text.WordWrap
                    }
                }
            }
            RowLayout {
                Layout.fillWidth: true
                Layout.topMargin: 4
                spacing: 8
                PermissionLabel { visible: view.model.isGranted }
                Item { Layout.fillWidth: true }
                CapsuleButton {
                    id: close
                    objectName: "close"
                    text: qsTr("Close")
                    onClicked: view.model.close()
                }
                CapsuleButton {
                    id: act
                    objectName: "act"
                    kind: CapsuleButton.Prominent
                    visible: !view.model.isGranted
                    text: view.model.actionText
                    onClicked: view.model.act()
                }
            }
        }
    }
}
