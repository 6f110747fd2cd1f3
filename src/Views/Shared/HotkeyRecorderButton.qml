import QtQuick
import QtQuick.Templates as T
import Velloro

/// What both hotkey recorders are; they set its looks.
T.AbstractButton {
    id: button

    required property HotkeyRecorderViewModel model
    /// Shown while recording until a modifier is held.
    property string prompt
    property string symbol
    property real minimumWidth: 0
    property real cornerRadius: 6
    property color fillColor
    property color strokeColor

    readonly property real promptSymbolSize: Math.round(font.pixelSize * 1.2)
    TextMetrics {
        id: promptMetrics
        font: Theme.weighted(button.font, Font.DemiBold)
        text: button.prompt
    }

    readonly property color foreground: model.isRecording ? Theme.onAccent : Theme.primary

    font: Theme.body
    text: model.isRecording ? (model.tempDisplayString || prompt) : model.displayString
    spacing: 6
    // As wide as it becomes while it records: it does not move away from under the pointer.
    implicitWidth: Math.max(contentItem.implicitWidth, minimumWidth,
                            Math.ceil(promptMetrics.advanceWidth) + promptSymbolSize + spacing)
        + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    onClicked: {
        // A screen reader presses the button of whichever window.
        if (!Window.active)
            Window.window.requestActivate()
        model.toggle()
    }
    onVisibleChanged: if (!visible) model.stop()
    Component.onDestruction: model.stop()
    // The keyboard is the recorder's alone while it records: not when the user has gone elsewhere.
    Connections {
        target: button.Window.window
        function onActiveChanged() {
            if (!button.Window.active)
                button.model.stop()
        }
    }

    Keys.forwardTo: [activation]
    Activation { id: activation; button: button }
    // A key that was taken may still be down; its repeats are not for the window.
    Keys.onPressed: event => event.accepted = event.isAutoRepeat

    Accessible.role: Accessible.Button
    Accessible.name: qsTr("Hotkey: %1").arg(text)
    Accessible.description: model.isRecording ? qsTr("Press the new combination")
                                              : qsTr("Press to choose another combination")
    Accessible.onPressAction: clicked()

    contentItem: Item {
        implicitWidth: row.implicitWidth
        implicitHeight: row.implicitHeight
        Row {
            id: row
            anchors.centerIn: parent
            spacing: button.spacing
            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: button.symbol !== ""
                name: button.symbol
                size: button.promptSymbolSize
                color: button.foreground
                SequentialAnimation on opacity {
                    running: button.model.isRecording && button.visible
                    loops: Animation.Infinite
                    alwaysRunToEnd: true
                    NumberAnimation { to: 0.35; duration: 500; easing.type: Easing.InOutSine }
                    NumberAnimation { to: 1; duration: 500; easing.type: Easing.InOutSine }
                }
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: button.text
                font: button.font
                color: button.foreground
                textFormat: Text.PlainText
            }
        }
    }
    background: RoundedRectangle {
        radius: button.cornerRadius
        color: button.model.isRecording ? Theme.accent : button.fillColor
        borderWidth: 1
        borderColor: button.model.isRecording ? Theme.accent : button.strokeColor

        RoundedRectangle {
            anchors.fill: parent
            radius: parent.radius
            color: Theme.faded(Theme.primary, button.down ? 0.1 : button.hovered ? 0.05 : 0)
        }
        FocusRing { control: button; radius: parent.radius + reach }
    }
}
