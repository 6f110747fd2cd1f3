import QtQuick
import Velloro

/// The help for a permission in a window of its own, while it is wanted.
Loader {
    id: loader

    required property PermissionHelpViewModel model

    active: model.isOpen
    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    sourceComponent: Window {
        transientParent: loader.Window.window
        title: loader.model.title
        width: Math.min(view.implicitWidth, Screen.desktopAvailableWidth)
        height: Math.min(view.implicitHeight, Screen.desktopAvailableHeight)
        minimumWidth: width
        minimumHeight: height
        flags: Qt.Dialog
        color: Theme.window
        visible: true
        onClosing: loader.model.close()
        Component.onCompleted: requestActivate()
        // The keyboard that comes with the window shows no ring.
        property bool wasActive: false
        onActiveChanged: {
            if (!wasActive)
                Qt.callLater(view.takeKeyboard, Qt.TabFocusReason)
            wasActive = true
        }

        PermissionHelpView {
            id: view
            anchors.fill: parent
            model: loader.model
        }
    }
    // qmllint enable unqualified
}
