import QtQuick
import Velloro

/// What a model's row has at its right, by the state of the model's file.
StateLoader {
    id: control

    required property ModelFileViewModel model
    /// The model's name, for the screen reader.
    required property string name
    property Component notDownloaded
    property Component downloaded
    property Component failed
    property font font: Theme.caption
    property real barWidth: 60
    /// Room at the right of a download's percentage.
    property real margin: 0

    sourceComponent: {
        switch (model.state) {
        case ModelFileViewModel.Downloading: return downloading
        case ModelFileViewModel.Downloaded: return downloaded
        case ModelFileViewModel.Failed: return failed
        default: return notDownloaded
        }
    }

    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    Component {
        id: downloading
        DownloadProgress {
            progress: control.model.progress
            percentText: control.model.percentText
            detail: control.model.detail
            label: qsTr("Downloading %1").arg(control.name)
            font: control.font
            barWidth: control.barWidth
            margin: control.margin
        }
    }
    // qmllint enable unqualified
}
