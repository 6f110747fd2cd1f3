import QtQuick
import Velloro

/// The hotkey recorder in the large form of the first run.
FocusScope {
    id: recorder

    required property HotkeyRecorderViewModel model

    implicitWidth: Math.max(button.implicitWidth, problem.visible ? problem.implicitWidth : 0)
    implicitHeight: button.implicitHeight + (problem.visible ? 8 + problem.height : 0)

    HotkeyRecorderButton {
        id: button
        objectName: "hotkeyRecorder"
        anchors.horizontalCenter: parent.horizontalCenter
        focus: true
        model: recorder.model
        prompt: qsTr("Press your hotkey...")
        symbol: model.isRecording ? "record.circle" : "keyboard"
        spacing: 8
        font: Qt.font({
            family: Theme.body.family,
            pixelSize: Math.round(18 * Theme.textScale),
            weight: model.isRecording ? Font.Medium : Font.DemiBold
        })
        leftPadding: 20
        rightPadding: 20
        topPadding: 12
        bottomPadding: 12
        cornerRadius: 10
        fillColor: Theme.faded(Theme.secondary, 0.15)
        strokeColor: Theme.faded(Theme.secondary, 0.3)
    }
    HotkeyProblemLine {
        id: problem
        anchors.top: button.bottom
        anchors.topMargin: 8
        anchors.horizontalCenter: parent.horizontalCenter
        maximumWidth: recorder.width
        text: recorder.model.problem
    }
}
