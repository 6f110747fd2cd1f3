pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A button that shows what is chosen and opens a menu of all that there is.
T.AbstractButton {
    id: control

    /// What is chosen, for the screen reader.
    property string label
    /// The texts of the menu's lines, and their kinds; one without a kind is a choice.
    property list<string> entries
    property list<int> kinds
    /// Which entry is chosen; -1 when none of them is.
    property int currentIndex: -1
    /// The button is as wide as any of its entries needs; otherwise as its text.
    property bool isAsWideAsEntries: false
    property int elide: Text.ElideRight
    /// The user chose an entry.
    signal activated(int index)

    text: currentIndex >= 0 && currentIndex < entries.length ? entries[currentIndex] : ""
    font: Theme.body
    spacing: 6
    leftPadding: 10
    rightPadding: 8
    topPadding: 4
    bottomPadding: 4
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    onClicked: menu.openBelow(control, currentIndex)
    Keys.forwardTo: [activation]
    Activation {
        id: activation
        button: control
        keys: [Qt.Key_Return, Qt.Key_Enter, Qt.Key_Down, Qt.Key_Up]
    }

    Accessible.role: Accessible.ButtonMenu
    Accessible.name: qsTr("%1: %2").arg(label).arg(text)
    Accessible.onPressAction: clicked()

    FontMetrics {
        id: metrics
        font: control.font
    }

    contentItem: RowLayout {
        spacing: control.spacing
        Text {
            // Measured anew with every font.
            readonly property real widest: metrics.font && control.isAsWideAsEntries
                ? Math.max(...control.entries.map(text => metrics.advanceWidth(text))) : 0

            Layout.fillWidth: true
            Layout.preferredWidth: Math.ceil(Math.max(implicitWidth, widest))
            text: control.text
            font: control.font
            color: Theme.primary
            elide: control.elide
            textFormat: Text.PlainText
        }
        Symbol {
            name: "chevron.up.chevron.down"
            size: Math.round(12 * Theme.textScale)
            color: Theme.secondary
        }
    }
    background: RoundedRectangle {
        radius: 6
        color: Qt.tint(Theme.control, Theme.faded(Theme.primary, control.down ? 0.16
                                                  : control.hovered ? 0.08 : 0))
        borderWidth: 1
        borderColor: Theme.controlBorder
        FocusRing { control: control }
    }

    PopUpMenu {
        id: menu
        objectName: "menu"

        minimumWidth: control.width

        Instantiator {
            model: control.entries
            delegate: PopUpMenuItem {
                required property int index
                required property string modelData

                text: modelData
                kind: control.kinds[index] ?? PopUpMenuItem.Choice
                checked: index === control.currentIndex
                onTriggered: control.activated(index)
            }
            onObjectAdded: (index, object) => menu.insertItem(index, object)
            onObjectRemoved: (index, object) => menu.removeItem(object)
        }
    }
}
