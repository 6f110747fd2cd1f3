import QtQuick
import QtQuick.Layouts
import Velloro

/// The first run, step by step.
FocusScope {
    id: view

    required property OnboardingViewModel model

    implicitWidth: Math.round(500 * Theme.growth)
    implicitHeight: Math.round(580 * Theme.growth)
    focus: true
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Welcome to Velloro")

    /// Where the keyboard was put rather than taken by the user.
    property Item placed

    /// For the button that leads on, while it can't yet for what is to be done first.
    function takeKeyboard(reason) {
        const first = step.item ? FocusOrder.harmlessAfter(step.item) : null
        placed = forward.enabled ? forward
            : first && FocusOrder.isAround(step.item, first) ? first : back
        placed.forceActiveFocus(reason)
    }
    /// Puts the keyboard where it serves, unless the user has it somewhere.
    function settle() {
        const holder = Window.activeFocusItem
        if (!holder || holder === placed || !holder.activeFocusOnTab || !holder.visible)
            takeKeyboard(Qt.TabFocusReason)
    }

    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    Component { id: welcome; WelcomeStepView {} }
    Component { id: permissions; PermissionsStepView { model: view.model } }
    Component { id: modelDownload; ModelDownloadStepView { appState: view.model.appState; model: view.model.download } }
    Component { id: hotkeySetup; HotkeySetupStepView { model: view.model } }
    Component { id: showcase; ShowcaseStepView {} }
    Component { id: done; DoneStepView { model: view.model } }
    // qmllint enable unqualified

    Shortcut {
        sequences: [StandardKey.Close] // qmllint disable unqualified
        onActivated: view.model.close()
    }

    RoundedRectangle {
        anchors.fill: parent
        radius: 10
        color: Theme.material
        borderWidth: 1
        borderColor: Theme.separator
    }
    // The window has no title bar: it is moved by what is no control.
    DragHandler {
        target: null
        onActiveChanged: if (active) view.Window.window.startSystemMove()
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        RowLayout {
            Layout.fillWidth: true
            Layout.leftMargin: 40
            Layout.rightMargin: 40
            Layout.topMargin: 20
            spacing: 8
            Accessible.role: Accessible.ProgressBar
            Accessible.name: qsTr("Step %1 of 6").arg(view.model.currentStep + 1)

            Repeater {
                id: capsules
                model: 6
                RoundedRectangle {
                    required property int index

                    objectName: "capsule" + index
                    Layout.fillWidth: true
                    Layout.preferredWidth: 1
                    implicitHeight: 4
                    radius: 2
                    // qmllint disable unqualified
                    color: view.model.currentStep >= index ? Theme.accent
                                                           : Theme.faded(Theme.secondary, 0.3)
                    // qmllint enable unqualified
                }
            }
        }

        ScrollArea {
            id: area
            Layout.fillWidth: true
            Layout.fillHeight: true
            contentHeight: Math.max(height, step.page ? step.page.implicitHeight : 0)

            Loader {
                id: step

                readonly property StepPage page: item as StepPage

                objectName: "step"
                width: area.width
                height: area.contentHeight
                sourceComponent: [welcome, permissions, modelDownload, hotkeySetup, showcase,
                                  done][view.model.currentStep]
                onLoaded: {
                    area.contentY = 0
                    appear.restart()
                    view.settle()
                }
                NumberAnimation on opacity {
                    id: appear
                    running: false
                    from: 0
                    to: 1
                    duration: 200
                    easing.type: Easing.InOutQuad
                }
            }
        }

        RowLayout {
            Layout.fillWidth: true
            Layout.margins: 30
            CapsuleButton {
                id: back
                objectName: "back"
                visible: view.model.currentStep !== OnboardingViewModel.Welcome
                text: qsTr("Back")
                onClicked: view.model.back()
            }
            Item { Layout.fillWidth: true }
            CapsuleButton {
                id: forward
                objectName: "forward"
                kind: CapsuleButton.Prominent
                focus: true
                enabled: view.model.canProceed
                text: view.model.currentStep === OnboardingViewModel.Done ? qsTr("Get Started")
                                                                      : qsTr("Continue")
                onClicked: view.model.proceed()
                onEnabledChanged: if (enabled) view.settle()
            }
        }
    }

    IconButton {
        objectName: "close"
        anchors.top: parent.top
        anchors.right: parent.right
        anchors.margins: 8
        symbol: "xmark"
        symbolSize: Math.round(12 * Theme.textScale)
        text: qsTr("Close")
        onClicked: view.model.close()
    }
}
