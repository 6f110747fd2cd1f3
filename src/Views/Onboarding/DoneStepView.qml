import QtQuick
import QtQuick.Layouts
import Velloro

/// The last step: how to dictate.
StepPage {
    id: page

    required property OnboardingModel model

    spacing: 24
    Accessible.name: qsTr("You're All Set!")

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        name: "checkmark.circle.fill"
        size: 96
        color: Theme.green
    }
    StepText {
        text: qsTr("You're All Set!")
        font: Theme.weighted(Theme.largeTitle, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    StepText {
        objectName: "instruction"
        text: page.model.instruction
        font: Theme.title3
        color: Theme.secondary
    }
    HotkeyProblemLine {
        Layout.alignment: Qt.AlignHCenter
        Layout.maximumWidth: page.width - 2 * Theme.padding
        text: page.model.hotkey.problem
    }
    ColumnLayout {
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: Theme.padding
        spacing: 8
        StepText {
            text: qsTr("Look for the")
            color: Theme.secondary
        }
        RowLayout {
            Layout.alignment: Qt.AlignHCenter
            spacing: 6
            Symbol {
                name: "waveform"
                size: Math.round(18 * Theme.textScale)
                color: Theme.primary
            }
            ThemedText {
                text: qsTr("icon in your menu bar")
                font: Theme.bodyMedium
            }
        }
    }
}
