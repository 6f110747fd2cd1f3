import QtQuick
import QtQuick.Layouts
import Velloro

/// The second step: microphone and accessibility.
StepPage {
    id: page

    required property OnboardingViewModel model

    spacing: 24
    Accessible.name: qsTr("Permissions")
    Component.onCompleted: model.checkPermissions()

    StepText {
        text: qsTr("Permissions")
        font: Theme.weighted(Theme.title, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    StepText {
        text: qsTr("Velloro needs a few permissions to work its magic")
        color: Theme.secondary
    }
    ColumnLayout {
        id: cards
        Layout.fillWidth: true
        Layout.leftMargin: 40
        Layout.rightMargin: 40
        spacing: 16
        PermissionCard {
            objectName: "microphone"
            icon: "mic.fill"
            title: qsTr("Microphone")
            description: qsTr("To hear your voice")
            isRequired: true
            isGranted: page.model.appState.hasMicrophonePermission
            onAction: page.model.requestMicrophonePermission()
        }
        PermissionCard {
            objectName: "accessibility"
            icon: "accessibility"
            title: qsTr("Accessibility")
            description: qsTr("To type into other apps")
            isRequired: true
            isGranted: page.model.appState.hasAccessibilityPermission
            onAction: page.model.requestAccessibilityPermission()
        }
        Note {
            objectName: "microphoneProblem"
            Layout.fillWidth: true
            visible: text !== ""
            onHeightChanged: page.addition = visible ? height + cards.spacing : 0
            onVisibleChanged: page.addition = visible ? height + cards.spacing : 0
            text: page.model.microphoneProblem
            color: Theme.orange
        }
    }
}
