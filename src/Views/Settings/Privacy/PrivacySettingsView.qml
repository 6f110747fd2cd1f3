import QtQuick
import QtQuick.Layouts
import Velloro

/// The privacy pane: what is promised, what is permitted, and the data that is kept.
GroupedForm {
    id: pane

    required property AppState appState
    required property PermissionHelpViewModel help

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Privacy")

    component Promise: Item {
        property alias symbol: mark.name
        property alias tint: mark.color
        property alias text: label.text

        Layout.fillWidth: true
        implicitHeight: Math.max(mark.height, label.height)
        Symbol {
            id: mark
            anchors.verticalCenter: parent.verticalCenter
            size: Math.round(18 * Theme.textScale)
        }
        ThemedText {
            id: label
            anchors.left: mark.right
            anchors.leftMargin: 10
            anchors.right: parent.right
            anchors.verticalCenter: parent.verticalCenter
            wrapMode: Text.WordWrap
        }
    }

    component PermissionRow: RowLayout {
        id: permission

        property string title
        property bool isGranted: false
        signal enable()

        Layout.fillWidth: true
        spacing: 8
        Accessible.role: Accessible.Grouping
        Accessible.name: title

        ThemedText { text: permission.title }
        Item { Layout.fillWidth: true }
        PermissionLabel { visible: permission.isGranted }
        CapsuleButton {
            objectName: "enable" + permission.title
            visible: !permission.isGranted
            kind: CapsuleButton.Prominent
            size: CapsuleButton.Small
            text: qsTr("Enable")
            Accessible.description: permission.title
            onClicked: permission.enable()
        }
    }

    FormSection {
        title: qsTr("Privacy")
        Promise {
            symbol: "checkmark.shield.fill"
            tint: Theme.green
            text: qsTr("All processing happens on-device")
        }
        Promise {
            symbol: "wifi.slash"
            tint: Theme.blue
            text: qsTr("No network connections required")
        }
        Promise {
            symbol: "eye.slash.fill"
            tint: Theme.purple
            text: qsTr("Zero analytics or tracking")
        }
    }

    FormSection {
        title: qsTr("Permissions")
        PermissionRow {
            title: qsTr("Microphone")
            isGranted: pane.appState.hasMicrophonePermission
            onEnable: pane.help.enableMicrophone()
        }
        PermissionRow {
            title: qsTr("Accessibility")
            isGranted: pane.appState.hasAccessibilityPermission
            onEnable: pane.help.enableAccessibility()
        }
        Note {
            objectName: "permissionsNote"
            Layout.fillWidth: true
            topPadding: 4
            visible: !pane.appState.hasMicrophonePermission || !pane.appState.hasAccessibilityPermission
            text: qsTr("Velloro needs these permissions to function correctly.")
        }
    }

    FormSection {
        title: qsTr("Data")
        CapsuleButton {
            tint: Theme.red
            destroys: true
            text: qsTr("Clear Transcription History")
            onClicked: pane.appState.clearHistory()
        }
    }

    PermissionHelpWindow { model: pane.help }
}
