import QtQuick
import Velloro

/// The hotkey as a button; pressed, it takes the next combination. What keeps the combination from
/// being had stands in a line below.
FocusScope {
    id: recorder

    required property HotkeyRecorderViewModel model
    /// The line below is broken where it is longer.
    property real maximumWidth: Infinity

    implicitWidth: Math.max(button.implicitWidth,
                            problem.visible ? Math.min(problem.implicitWidth, maximumWidth) : 0)
    implicitHeight: button.implicitHeight + (problem.visible ? 4 + problem.height : 0)

    HotkeyRecorderButton {
        id: button
        objectName: "hotkeyRecorder"
        anchors.right: parent.right
        focus: true
        model: recorder.model
        prompt: qsTr("Press keys...")
        symbol: model.isRecording ? "recordingtape" : ""
        minimumWidth: 80
        leftPadding: 12
        rightPadding: 12
        topPadding: 6
        bottomPadding: 6
        cornerRadius: 6
        fillColor: Theme.faded(Theme.gray, 0.1)
        strokeColor: Theme.faded(Theme.gray, 0.3)
    }
    HotkeyProblemLine {
        id: problem
        anchors.top: button.bottom
        anchors.topMargin: 4
        anchors.right: parent.right
        maximumWidth: recorder.width
        text: recorder.model.problem
    }
}
