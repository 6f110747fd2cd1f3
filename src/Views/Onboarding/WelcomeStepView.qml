import QtQuick
import QtQuick.Layouts
import Velloro

/// The first step: what Velloro is.
StepPage {
    spacing: 24
    Accessible.name: qsTr("Welcome to Velloro")

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        name: "waveform.circle.fill"
        size: Math.round(96 * Theme.growth)
        color: Theme.blue
        gradientColor: Theme.purple
    }
    StepText {
        text: qsTr("Welcome to Velloro")
        font: Theme.weighted(Theme.largeTitle, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.leftMargin: 40
        Layout.rightMargin: 40
        spacing: 16
        FeatureRow {
            icon: "keyboard"
            title: qsTr("Press ⌥Space to dictate anywhere")
            description: qsTr("Works in any app, any text field")
        }
        FeatureRow {
            icon: "lock.shield"
            title: qsTr("Runs on-device")
            description: qsTr("Your voice never leaves your computer")
        }
        FeatureRow {
            icon: "bolt"
            title: qsTr("Lightning fast")
            description: qsTr("Powered by optimized Whisper models")
        }
    }
}
