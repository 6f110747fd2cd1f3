import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A recording mode that can be chosen.
// The kind of button is the role that the toolkit tells of it.
T.RadioButton {
    id: card

    property string title
    property string description
    property string symbol
    property bool isSelected: false

    Layout.fillWidth: true
    padding: Theme.padding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    checked: isSelected
    text: title

    Accessible.role: Accessible.RadioButton
    Accessible.name: title
    Accessible.description: description
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: clicked()
    Accessible.onToggleAction: clicked()

    Keys.forwardTo: [activation]
    Activation { id: activation; button: card }

    contentItem: RowLayout {
        spacing: 8
        Item {
            implicitWidth: Math.round(40 * Theme.growth)
            implicitHeight: icon.height
            Symbol {
                id: icon
                anchors.centerIn: parent
                name: card.symbol
                size: Math.round(Theme.title2.pixelSize * 1.25)
                color: card.isSelected ? Theme.onAccent : Theme.secondary
            }
        }
        ColumnLayout {
            Layout.fillWidth: true
            spacing: 2
            Text {
                Layout.fillWidth: true
                text: card.title
                font: Theme.headline
                color: card.isSelected ? Theme.onAccent : Theme.primary
                textFormat: Text.PlainText
            }
            Text {
                Layout.fillWidth: true
                text: card.description
                font: Theme.caption
                color: card.isSelected ? Theme.onAccent : Theme.secondary
                textFormat: Text.PlainText
                wrapMode: Text.WordWrap
            }
        }
        Symbol {
            visible: card.isSelected
            name: "checkmark.circle.fill"
            size: Math.round(18 * Theme.textScale)
            color: Theme.onAccent
        }
    }
    background: RoundedRectangle {
        radius: 12
        color: card.isSelected ? Theme.accent : Theme.faded(Theme.secondary, 0.1)
        FocusRing { control: card; radius: parent.radius + reach }
    }
}
