import QtQuick
import QtQuick.Templates as T
import Velloro

/// A menu in the theme's look. The keyboard moves between its enabled entries, a letter goes to the
/// next one that begins with it, and what can't be chosen is scrolled to.
T.Menu {
    id: menu

    property real minimumWidth: 128

    margins: 4
    padding: 4
    overlap: 1
    implicitWidth: Math.max(contentItem.implicitWidth + leftPadding + rightPadding, minimumWidth)
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding

    delegate: PopUpMenuItem {}

    readonly property ListView list: contentItem as ListView

    /// The first enabled entry from this place on, and from the start after the end, for which
    /// `matches` holds; -1 when there is none.
    function entryFrom(start, matches) {
        for (let count = 0; count < menu.count; ++count) {
            const index = (start + count) % menu.count
            const item = menu.itemAt(index)
            if (item.enabled && matches(item))
                return index
        }
        return -1
    }
    function goToLetter(text) {
        const letter = text.toLocaleLowerCase()
        const index = entryFrom(menu.currentIndex + 1, item =>
            (item as PopUpMenuItem).text.toLocaleLowerCase().startsWith(letter))
        if (index >= 0)
            menu.currentIndex = index
        return index >= 0
    }
    /// Whether an enabled entry comes after the current one (`step` 1) or before it (-1).
    function hasEntry(step) {
        for (let index = menu.currentIndex + step; index >= 0 && index < menu.count;
             index += step) {
            if (menu.itemAt(index).enabled)
                return true
        }
        return false
    }
    function isInView(index) {
        const item = menu.itemAt(index)
        return !item || (item.y >= list.contentY
                         && item.y + item.height <= list.contentY + list.height)
    }
    /// False where there is no way left to scroll.
    function scrollBy(distance) {
        const y = Math.max(0, Math.min(list.contentHeight - list.height, list.contentY + distance))
        const moves = y !== list.contentY
        list.contentY = y
        return moves
    }

    /// Opens the menu below its button, at the entry with this index or else the first enabled one.
    function openBelow(button, index) {
        popup(button, 0, button.height + 2)
        currentIndex = index >= 0 ? index : entryFrom(0, () => true)
    }

    // Closed, a menu leaves the keyboard to the window's root; it goes back to the menu's button.
    onClosed: {
        const item = parent.Window.activeFocusItem
        if (!item || item === parent.Window.contentItem)
            parent.forceActiveFocus(Qt.PopupFocusReason)
    }

    contentItem: ListView {
        objectName: "menuEntries"

        focus: true
        keyNavigationEnabled: false
        Keys.onPressed: event => {
            const line = menu.count > 0 ? menu.itemAt(0).height : 0
            switch (event.key) {
            case Qt.Key_Down:
                event.accepted = !menu.hasEntry(1) && menu.scrollBy(line)
                break
            case Qt.Key_Up:
                event.accepted = (!menu.hasEntry(-1) || !menu.isInView(menu.currentIndex))
                    && menu.scrollBy(-line)
                break
            case Qt.Key_PageDown:
                event.accepted = menu.scrollBy(height - line)
                break
            case Qt.Key_PageUp:
                event.accepted = menu.scrollBy(line - height)
                break
            case Qt.Key_End:
                event.accepted = menu.scrollBy(contentHeight)
                break
            case Qt.Key_Home:
                event.accepted = menu.scrollBy(-contentHeight)
                break
            default:
                event.accepted = event.text.trim() !== "" && menu.goToLetter(event.text)
            }
        }
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
        highlightMoveDuration: 0
        boundsBehavior: Flickable.StopAtBounds
        T.ScrollBar.vertical: T.ScrollBar {
            visible: size < 1
            implicitWidth: 7
            padding: 1
            contentItem: RoundedRectangle {
                implicitWidth: 5
                radius: 2.5
                color: Theme.faded(Theme.primary, 0.3)
            }
        }
    }
    background: RoundedRectangle {
        color: Theme.isDark ? "#38383d" : "#ffffff"
        borderWidth: 1
        borderColor: Theme.controlBorder
        radius: 7
    }
}
