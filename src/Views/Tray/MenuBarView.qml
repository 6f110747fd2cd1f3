import QtQuick
import QtQuick.Layouts
import Velloro

/// The panel under the tray icon.
FocusScope {
    id: panel

    required property MenuBarViewModel model

    /// The room that there is for the panel.
    property size room: Qt.size(10000, 10000)

    width: Math.min(Math.round(280 * Theme.growth), room.width)
    height: Math.min(content.implicitHeight, room.height)
    focus: true
    Accessible.role: Accessible.Pane
    Accessible.name: "Velloro"

    // It opens at the chosen preset, wherever the keyboard was when it was closed.
    function takeKeyboard(reason) {
        for (let index = 0; index < rows.count; ++index) {
            if (rows.itemAt(index).model.isSelected)
                rows.itemAt(index).forceActiveFocus(reason)
        }
    }
    Connections {
        target: panel.Window.window
        function onVisibleChanged() {
            if (!panel.Window.window.visible)
                panel.takeKeyboard(Qt.OtherFocusReason)
        }
    }

    Shortcut {
        sequence: "Escape"
        onActivated: panel.model.close()
    }

    RoundedRectangle {
        anchors.fill: parent
        radius: 10
        color: Theme.material
        borderWidth: 1
        borderColor: Theme.separator
    }

    ScrollArea {
        anchors.fill: parent
        contentHeight: content.implicitHeight

        ColumnLayout {
            id: content
            width: parent.width
            spacing: 0

            RowLayout {
                Layout.fillWidth: true
                Layout.margins: Theme.padding
                spacing: 8

                ColumnLayout {
                    spacing: 2
                    ThemedText {
                        text: "Velloro"
                        font: Theme.headline
                        Accessible.role: Accessible.Heading
                    }
                    ThemedText {
                        objectName: "stateText"
                        text: panel.model.stateText
                        font: Theme.caption
                        color: Theme.secondary
                    }
                }
                Item { Layout.fillWidth: true }
                RoundedRectangle {
                    objectName: "hotkeyBadge"
                    implicitWidth: Math.ceil(hotkey.implicitWidth) + 16
                    implicitHeight: Math.ceil(hotkey.implicitHeight) + 8
                    radius: 4
                    color: Theme.quaternary
                    ThemedText {
                        id: hotkey
                        anchors.centerIn: parent
                        text: panel.model.hotkeyText
                        font: Theme.caption
                        Accessible.name: qsTr("Hotkey: %1").arg(text)
                    }
                }
            }

            RowLayout {
                Layout.fillWidth: true
                Layout.leftMargin: Theme.padding
                Layout.rightMargin: Theme.padding
                Layout.topMargin: -6
                Layout.bottomMargin: 12
                visible: panel.model.hotkeyProblem !== ""
                spacing: 6
                Symbol {
                    name: "exclamationmark.triangle"
                    size: Math.round(14 * Theme.textScale)
                    color: Theme.orange
                }
                Note {
                    objectName: "hotkeyProblem"
                    Layout.fillWidth: true
                    text: panel.model.hotkeyProblem
                }
            }

            Divider { Layout.fillWidth: true }

            ColumnLayout {
                Layout.fillWidth: true
                Layout.margins: Theme.padding
                spacing: 12

                RowLayout {
                    Layout.fillWidth: true
                    spacing: 4
                    RoundedRectangle {
                        implicitWidth: Math.round(6 * Theme.growth)
                        implicitHeight: implicitWidth
                        radius: width / 2
                        color: Theme.green
                    }
                    ThemedText {
                        text: qsTr("Offline")
                        font: Theme.caption2
                        color: Theme.secondary
                    }
                    Item { Layout.fillWidth: true }
                    ThemedText {
                        objectName: "recordingModeText"
                        text: panel.model.recordingModeText
                        font: Theme.caption2
                        color: Theme.secondary
                    }
                }

                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 8
                    ThemedText {
                        text: qsTr("Model")
                        font: Theme.caption
                        color: Theme.secondary
                    }
                    Repeater {
                        id: rows
                        model: panel.model.rows
                        EnhancedModelRowView {
                            required property int index
                            required property EnhancedModelRowViewModel modelData

                            Layout.fillWidth: true
                            // The rows' letters and symbols stand in line with what is above them.
                            Layout.leftMargin: -8
                            Layout.rightMargin: -10
                            model: modelData
                            focus: modelData.isSelected
                            onMoveRequested: step => {
                                const next = rows.itemAt(index + step)
                                if (next)
                                    next.forceActiveFocus(Qt.TabFocusReason)
                            }
                        }
                    }
                }
            }

            Divider { Layout.fillWidth: true }

            RowLayout {
                Layout.fillWidth: true
                Layout.margins: Theme.padding
                // The last one's letters end where the padding begins.
                Layout.rightMargin: Theme.padding - 4
                spacing: 8
                Item { Layout.fillWidth: true }
                CapsuleButton {
                    kind: CapsuleButton.Borderless
                    size: CapsuleButton.Small
                    text: qsTr("Settings...")
                    onClicked: panel.model.openSettings()
                }
                CapsuleButton {
                    kind: CapsuleButton.Borderless
                    size: CapsuleButton.Small
                    text: qsTr("Quit")
                    onClicked: panel.model.quit()
                }
            }
        }
    }
}
