import QtQuick
import Velloro

/// The help for a permission in a window of its own, while it is wanted.
Loader {
    id: loader

    required property PermissionHelpModel model

    active: model.isOpen
    sourceComponent: Window {
        title: loader.model.title
        width: view.implicitWidth
        height: view.implicitHeight
        minimumWidth: view.implicitWidth
        minimumHeight: view.implicitHeight
        flags: Qt.Dialog
        color: Theme.window
        visible: true
        onClosing: loader.model.close()
        Component.onCompleted: {
            requestActivate()
            view.forceActiveFocus()
        }

        PermissionHelpView {
            id: view
            anchors.fill: parent
            model: loader.model
        }
    }
}
