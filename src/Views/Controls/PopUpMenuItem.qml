import QtQuick
import QtQuick.Templates as T
import Velloro

/// One entry of a menu, with a check mark where it is `checked`.
T.MenuItem {
    id: item

    property color textColor: Theme.primary

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    leftPadding: 24
    rightPadding: 12
    topPadding: 4
    bottomPadding: 4
    font: Theme.body

    Accessible.role: Accessible.MenuItem
    Accessible.name: text
    Accessible.onPressAction: triggered()

    contentItem: Text {
        text: item.text
        font: item.font
        color: item.highlighted && item.enabled ? Theme.onAccent : item.textColor
        textFormat: Text.PlainText
    }
    indicator: Symbol {
        x: 6
        y: (item.height - height) / 2
        size: 12
        name: "checkmark"
        visible: item.checked
        color: item.highlighted ? Theme.onAccent : Theme.primary
    }
    background: Rectangle {
        radius: 4
        color: item.highlighted && item.enabled ? Theme.accent : "transparent"
    }
}
