import QtQuick
import QtQuick.Templates as T
import Velloro

/// One line of a menu: what can be chosen, with a check mark where it is `checked`, the heading of
/// what follows, or a remark.
T.MenuItem {
    id: item

    enum Kind { Choice, Heading, Remark }
    property int kind: PopUpMenuItem.Choice

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    leftPadding: kind === PopUpMenuItem.Heading ? 10 : indicator.x + indicator.width + 6
    rightPadding: 12
    topPadding: 4
    bottomPadding: 4
    font: kind === PopUpMenuItem.Heading ? Theme.caption : Theme.body
    enabled: kind === PopUpMenuItem.Choice

    Accessible.role: kind === PopUpMenuItem.Choice ? Accessible.MenuItem
        : kind === PopUpMenuItem.Heading ? Accessible.Heading : Accessible.StaticText
    Accessible.name: text
    Accessible.onPressAction: triggered()

    // The key that opened the menu may still be down.
    Keys.forwardTo: [pressKeys]
    PressKeys { id: pressKeys; button: item }

    contentItem: Text {
        text: item.text
        font: item.font
        color: item.highlighted && item.enabled ? Theme.onAccent
             : [Theme.primary, Theme.secondary, Theme.tertiary][item.kind]
        textFormat: Text.PlainText
    }
    indicator: Symbol {
        x: 6
        y: (item.height - height) / 2
        size: Math.round(12 * Theme.textScale)
        name: "checkmark"
        visible: item.checked
        color: item.highlighted ? Theme.onAccent : Theme.primary
    }
    background: RoundedRectangle {
        radius: 4
        color: item.highlighted && item.enabled ? Theme.accent : "transparent"
    }
}
