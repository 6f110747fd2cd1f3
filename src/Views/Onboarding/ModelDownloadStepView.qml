import QtQuick
import QtQuick.Layouts
import Velloro

/// The third step: the first voice model.
StepPage {
    id: page

    required property AppState appState
    required property ModelDownloadStepViewModel model

    readonly property bool isDownloading: !model.isReady && appState.isDownloadingModel
    readonly property bool isWaiting: !model.isReady && !appState.isDownloadingModel

    spacing: 24
    Accessible.name: title.text
    Component.onCompleted: model.shown()

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        name: page.model.isReady ? "checkmark.circle.fill"
            : page.isDownloading ? "arrow.down.circle.fill" : "arrow.down.circle"
        size: Math.round(72 * Theme.growth)
        color: page.model.isReady ? Theme.green : Theme.blue

        SequentialAnimation on opacity {
            running: page.isDownloading
            loops: Animation.Infinite
            alwaysRunToEnd: true
            NumberAnimation { to: 0.4; duration: 700; easing.type: Easing.InOutSine }
            NumberAnimation { to: 1; duration: 700; easing.type: Easing.InOutSine }
        }
    }
    StepText {
        id: title
        objectName: "title"
        text: page.model.isReady ? qsTr("Voice Model Ready!")
            : page.isDownloading ? qsTr("Setting Up Your Voice Assistant")
            : qsTr("Download Voice Model")
        font: Theme.weighted(Theme.title2, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    StepText {
        objectName: "explanation"
        Layout.leftMargin: page.isWaiting ? 20 : 0
        Layout.rightMargin: page.isWaiting ? 20 : 0
        text: page.model.isReady ? qsTr("The Balanced model is installed and ready to use")
            : page.isDownloading ? qsTr("Downloading the voice recognition model...")
            : page.model.explanation
        font: Theme.subheadline
        color: Theme.secondary
    }
    DownloadProgress {
        Layout.alignment: Qt.AlignHCenter
        Layout.topMargin: 8
        visible: page.isDownloading
        isStacked: true
        progress: page.appState.downloadProgress
        percentText: page.model.percentText
        barWidth: 200
        color: Theme.secondary
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.alignment: Qt.AlignHCenter
        visible: page.isWaiting
        spacing: 12
        Note {
            objectName: "failure"
            Layout.fillWidth: true
            Layout.leftMargin: 20
            Layout.rightMargin: 20
            visible: page.model.failure !== ""
            text: qsTr("The download failed: %1").arg(page.model.failure)
            color: Theme.red
            horizontalAlignment: Text.AlignHCenter
        }
        Note {
            objectName: "advice"
            Layout.fillWidth: true
            Layout.leftMargin: 20
            Layout.rightMargin: 20
            visible: page.model.advice !== ""
            text: page.model.advice
            wrapMode: Text.Wrap
            horizontalAlignment: Text.AlignHCenter
        }
        CapsuleButton {
            objectName: "download"
            Layout.alignment: Qt.AlignHCenter
            kind: CapsuleButton.Prominent
            size: CapsuleButton.Large
            symbol: "arrow.down.circle"
            leftPadding: 40
            rightPadding: 40
            text: qsTr("Download Now")
            onClicked: page.model.startDownload()
        }
    }
}
