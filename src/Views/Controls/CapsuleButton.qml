import QtQuick
import QtQuick.Templates as T
import Velloro

/// A push button with round ends: filled with the accent colour (prominent), on a plain ground
/// (bordered), or letters alone (borderless).
T.AbstractButton {
    id: control

    enum Kind { Bordered, Prominent, Borderless }
    enum Size { Small, Regular, Large }

    property int kind: CapsuleButton.Bordered
    property int size: CapsuleButton.Regular
    /// The colour of the letters, and of a prominent button's ground.
    property color tint: kind === CapsuleButton.Prominent ? Theme.accent : Theme.primary
    property string symbol
    /// It can't be undone. Such a button never gets the keyboard unless the user takes it there.
    property bool destroys: false

    font: size === CapsuleButton.Large ? Theme.title3
        : size === CapsuleButton.Small ? Theme.caption : Theme.body
    spacing: 6
    leftPadding: kind === CapsuleButton.Borderless ? 4 : [10, 14, 20][size]
    rightPadding: leftPadding
    topPadding: kind === CapsuleButton.Borderless ? 2 : [3, 5, 9][size]
    bottomPadding: topPadding
    implicitWidth: Math.max(24, contentItem.implicitWidth + leftPadding + rightPadding)
    implicitHeight: Math.max(24, contentItem.implicitHeight + topPadding + bottomPadding)
    // A small button can be hit above and below what is drawn.
    topInset: (implicitHeight - contentItem.implicitHeight - topPadding - bottomPadding) / 2
    bottomInset: topInset
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    opacity: enabled ? 1 : 0.4

    Accessible.role: Accessible.Button
    Accessible.name: text
    Accessible.onPressAction: clicked()

    Keys.forwardTo: [activation]
    Activation { id: activation; button: control }

    readonly property color foreground: kind === CapsuleButton.Prominent
        ? Theme.inkOn(tint) : tint
    /// The ground moves away from the letters when it is touched.
    function touched(factor) {
        return Qt.colorEqual(foreground, "white") ? Qt.darker(tint, factor) : Qt.lighter(tint, factor)
    }

    contentItem: Item {
        implicitWidth: row.implicitWidth
        implicitHeight: row.implicitHeight
        Row {
            id: row
            anchors.centerIn: parent
            spacing: control.spacing
            Symbol {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.symbol !== ""
                name: control.symbol
                size: Math.round(control.font.pixelSize * 1.2)
                color: control.foreground
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: control.text
                font: control.font
                color: control.foreground
                textFormat: Text.PlainText
            }
        }
    }
    background: RoundedRectangle {
        radius: control.kind === CapsuleButton.Borderless ? 5 : height / 2
        color: {
            if (control.kind === CapsuleButton.Prominent)
                return control.touched(control.down ? 1.2 : control.hovered ? 1.08 : 1)
            const shade = control.down ? 0.16 : control.hovered ? 0.08 : 0
            if (control.kind === CapsuleButton.Borderless)
                return Theme.faded(Theme.primary, shade)
            return Qt.tint(Theme.control, Theme.faded(Theme.primary, shade))
        }
        borderWidth: control.kind === CapsuleButton.Bordered ? 1 : 0
        borderColor: Theme.controlBorder
        FocusRing {
            control: control
            gap: control.kind === CapsuleButton.Borderless ? 0 : 2
            radius: parent.radius + reach
        }
    }
}
