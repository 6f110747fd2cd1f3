import QtQuick
import QtQuick.Layouts
import Velloro

/// The last step: how to dictate, and what is still to be done before.
StepPage {
    id: page

    required property OnboardingViewModel model

    readonly property bool isFinished: model.unfinished === ""

    spacing: 24
    Accessible.name: title.text

    Symbol {
        objectName: "mark"
        Layout.alignment: Qt.AlignHCenter
        name: page.isFinished ? "checkmark.circle.fill" : "arrow.down.circle"
        size: Math.round(96 * Theme.growth)
        color: page.isFinished ? Theme.green : Theme.blue
    }
    StepText {
        id: title
        objectName: "title"
        text: page.isFinished ? qsTr("You're All Set!") : qsTr("Almost There")
        font: Theme.weighted(Theme.largeTitle, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    StepText {
        objectName: "unfinished"
        visible: !page.isFinished
        text: page.model.unfinished
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
        Layout.fillWidth: true
        Layout.topMargin: Theme.padding
        spacing: 8
        StepText {
            visible: page.model.hasTray
            text: qsTr("Look for the")
            color: Theme.secondary
        }
        RowLayout {
            Layout.alignment: Qt.AlignHCenter
            visible: page.model.hasTray
            spacing: 6
            Symbol {
                name: "waveform"
                size: Math.round(18 * Theme.textScale)
                color: Theme.primary
            }
            ThemedText {
                objectName: "tray"
                text: qsTr("icon in your tray")
                font: Theme.bodyMedium
            }
        }
        StepText {
            objectName: "noTray"
            visible: !page.model.hasTray
            text: qsTr("This desktop has no tray for Velloro's icon. Start Velloro again to open its panel.")
            color: Theme.secondary
        }
    }
}
