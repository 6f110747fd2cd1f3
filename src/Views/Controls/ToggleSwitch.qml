import QtQuick
import QtQuick.Templates as T
import Velloro

/// A switch at the right of its text, as wide as it is given room.
T.Switch {
    id: control

    implicitWidth: contentItem.implicitWidth + spacing + indicator.implicitWidth
    implicitHeight: Math.max(24, contentItem.implicitHeight, indicator.implicitHeight)
    spacing: 10
    font: Theme.body
    focusPolicy: Qt.StrongFocus
    opacity: enabled ? 1 : 0.5

    Accessible.role: Accessible.CheckBox
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: flip()
    Accessible.onToggleAction: flip()

    function flip() {
        toggle()
        toggled()
    }

    contentItem: Text {
        rightPadding: control.indicator.width + control.spacing
        text: control.text
        font: control.font
        color: Theme.primary
        textFormat: Text.PlainText
        wrapMode: Text.WordWrap
        verticalAlignment: Text.AlignVCenter
    }
    indicator: RoundedRectangle {
        objectName: "track"
        implicitWidth: Math.round(36 * Theme.growth)
        implicitHeight: Math.round(20 * Theme.growth)
        x: control.width - width
        y: (control.height - height) / 2
        radius: height / 2
        color: control.checked ? Theme.accent : Theme.gray

        RoundedRectangle {
            x: control.visualPosition * (parent.width - width - 4) + 2
            y: 2
            width: parent.height - 4
            height: width
            radius: width / 2
            objectName: "thumb"
            color: control.checked ? Theme.onAccent : "#ffffff"
            Behavior on x { NumberAnimation { duration: 120; easing.type: Easing.OutQuad } }
        }
        FocusRing { control: control; radius: parent.radius + reach }
    }
}
