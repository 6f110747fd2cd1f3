import QtQuick
import Velloro

/// Scrolls a view up and down to what has the keyboard in it.
Connections {
    id: follower

    required property Flickable view

    target: view.Window.window

    /// Brings an item into sight, with the row around it that asks for it (`isRevealedWhole`).
    function reveal(item) {
        const margin = 12
        const top = item.mapToItem(view.contentItem, 0, 0).y - margin
        const bottom = top + item.height + 2 * margin
        const first = view.originY - view.topMargin
        const last = view.originY + view.contentHeight + view.bottomMargin - view.height
        if (top < view.contentY)
            view.contentY = Math.max(first, top)
        else if (bottom > view.contentY + view.height)
            view.contentY = Math.min(Math.max(first, last), bottom - view.height)
    }

    function onActiveFocusItemChanged() {
        let item = view.Window.activeFocusItem
        for (let above = item; above; above = above.parent) {
            if (above.isRevealedWhole)
                item = above
            if (above === view.contentItem) {
                reveal(item)
                return
            }
        }
    }
}
