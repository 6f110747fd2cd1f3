import QtQuick
import QtQuick.Templates as T
import Velloro

/// A line of help that appears beside the control under the pointer, or with the keyboard focus.
T.ToolTip {
    id: tip

    delay: 600
    margins: 4
    padding: 5
    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: parent ? parent.height + 4 : 0
    implicitWidth: Math.min(contentItem.implicitWidth, 240) + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent

    contentItem: ThemedText {
        text: tip.text
        font: Theme.caption
        wrapMode: Text.WordWrap
    }
    background: RoundedRectangle {
        color: Theme.isDark ? "#3c3c41" : "#ffffff"
        borderColor: Theme.separator
        radius: 4
    }
}
