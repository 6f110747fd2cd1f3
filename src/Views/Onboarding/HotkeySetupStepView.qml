import QtQuick
import QtQuick.Layouts
import Velloro

/// The fourth step: recording mode and hotkey.
StepPage {
    id: page

    required property OnboardingViewModel model

    spacing: 16
    verticalPadding: 0
    Accessible.name: qsTr("Set Up Your Hotkey")

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        name: "keyboard"
        size: Math.round(60 * Theme.growth)
        color: Theme.purple
        gradientColor: Theme.blue
    }
    StepText {
        text: qsTr("Set Up Your Hotkey")
        font: Theme.weighted(Theme.title2, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    StepText {
        text: qsTr("Choose how you want to activate dictation")
        font: Theme.subheadline
        color: Theme.secondary
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.leftMargin: 30
        Layout.rightMargin: 30
        spacing: 8
        Accessible.role: Accessible.Grouping
        Accessible.name: qsTr("Activation Mode")

        ThemedText {
            text: qsTr("Activation Mode")
            font: Theme.headline
            Accessible.role: Accessible.Heading
        }
        ModeOptionCard {
            objectName: "holdToTalk"
            title: qsTr("Hold to Talk")
            description: qsTr("Hold while speaking, release to stop")
            symbol: "hand.raised"
            isSelected: page.model.appState.recordingMode === Domain.RecordingMode.holdToTalk
            onClicked: page.model.appState.recordingMode = Domain.RecordingMode.holdToTalk
        }
        ModeOptionCard {
            objectName: "toggle"
            title: qsTr("Toggle")
            description: qsTr("Press to start, press again to stop")
            symbol: "power"
            isSelected: page.model.appState.recordingMode === Domain.RecordingMode.toggle
            onClicked: page.model.appState.recordingMode = Domain.RecordingMode.toggle
        }
    }
    ColumnLayout {
        Layout.fillWidth: true
        spacing: 8
        StepText {
            text: qsTr("Your Hotkey")
            font: Theme.headline
            Accessible.role: Accessible.Heading
        }
        OnboardingHotkeyRecorder {
            Layout.fillWidth: true
            model: page.model.hotkey
        }
        StepText {
            text: qsTr("Click to change")
            font: Theme.caption2
            color: Theme.tertiary
        }
    }
}
