import QtQuick
import QtQuick.Templates as T
import Velloro

/// A menu in the theme's look.
T.Menu {
    id: menu

    margins: 4
    padding: 4
    overlap: 1
    implicitWidth: Math.max(contentItem.implicitWidth, 120) + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding

    delegate: PopUpMenuItem {}

    contentItem: ListView {
        implicitWidth: {
            let widest = 0
            for (let index = 0; index < menu.count; ++index)
                widest = Math.max(widest, menu.itemAt(index).implicitWidth)
            return widest
        }
        implicitHeight: Math.min(contentHeight,
                                 Window.window ? Window.window.height - 24 : contentHeight)
        model: menu.contentModel
        interactive: contentHeight > height
        clip: true
        currentIndex: menu.currentIndex
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: T.ScrollBar {
            id: bar
            visible: size < 1
            padding: 1
            contentItem: Rectangle {
                implicitWidth: 5
                radius: 2.5
                color: Theme.faded(Theme.primary, 0.3)
            }
        }
    }
    background: Rectangle {
        color: Theme.isDark ? "#38383d" : "#ffffff"
        border.width: 1
        border.color: Theme.controlBorder
        radius: 7
    }
}
