import QtQuick
import QtQuick.Templates as T
import Velloro

/// A button that shows the chosen one of several entries and opens a menu of all of them.
T.ComboBox {
    id: control

    /// What is chosen, for the screen reader.
    property string label

    font: Theme.body
    leftPadding: 10
    rightPadding: 28
    topPadding: 4
    bottomPadding: 4
    implicitWidth: Math.ceil(widestText) + leftPadding + rightPadding
    implicitHeight: implicitContentHeight + topPadding + bottomPadding
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true

    Accessible.role: Accessible.ComboBox
    Accessible.name: label
    Accessible.description: displayText
    Accessible.onPressAction: popup.open()

    /// The button is as wide as any of its entries needs.
    readonly property real widestText: {
        let widest = 0
        for (let index = 0; index < count; ++index)
            widest = Math.max(widest, metrics.advanceWidth(textAt(index)))
        return widest
    }

    FontMetrics {
        id: metrics
        font: control.font
    }

    contentItem: Text {
        text: control.displayText
        font: control.font
        color: Theme.primary
        elide: Text.ElideRight
        textFormat: Text.PlainText
        verticalAlignment: Text.AlignVCenter
    }
    indicator: Symbol {
        x: control.width - width - 8
        y: (control.height - height) / 2
        size: 12
        name: "chevron.up.chevron.down"
        color: Theme.secondary
    }
    background: Rectangle {
        radius: 6
        color: Qt.tint(Theme.control, Theme.faded(Theme.primary, control.down ? 0.16
                                                  : control.hovered ? 0.08 : 0))
        border.width: 1
        border.color: Theme.controlBorder
        FocusRing { control: control; radius: 8 }
    }
    delegate: PopUpMenuItem {
        required property int index

        width: ListView.view ? ListView.view.width : implicitWidth
        text: control.textAt(index)
        checked: index === control.currentIndex
        highlighted: index === control.highlightedIndex
        Accessible.role: Accessible.ListItem
    }
    popup: T.Popup {
        y: control.height + 2
        width: control.width
        implicitHeight: Math.min(contentItem.implicitHeight + 8,
                                 control.Window.window ? control.Window.window.height - 24 : 300)
        margins: 4
        padding: 4
        contentItem: ListView {
            implicitHeight: contentHeight
            clip: true
            model: control.delegateModel
            currentIndex: control.highlightedIndex
            boundsBehavior: Flickable.StopAtBounds
        }
        background: Rectangle {
            color: Theme.isDark ? "#38383d" : "#ffffff"
            border.width: 1
            border.color: Theme.controlBorder
            radius: 7
        }
    }
}
