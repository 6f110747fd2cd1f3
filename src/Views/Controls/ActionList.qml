import QtQuick
import QtQuick.Templates as T
import Velloro

/// A long list whose rows have one button each. The list is one stop for the Tab key; Up and Down,
/// Page Up and Page Down, Home and End move between the rows' buttons. A row tells its button by
/// the property `action`, which has the keyboard's policy `policyOf(index)` and hands its keys to
/// `navigate`.
ListView {
    id: list

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: false
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    cacheBuffer: 200
    Accessible.role: Accessible.List

    /// The row whose button Tab reaches. The view's own current item would take the keyboard from
    /// what is typed into above the rows.
    property int row: 0

    currentIndex: -1
    // Where the user has scrolled to, the keyboard goes on.
    onMovementEnded: followSight()

    function followSight() {
        const index = indexAt(width / 2, contentY + height / 2)
        if (index >= 0 && !itemAtIndex(row))
            row = index
    }

    function policyOf(index) {
        return index === Math.max(0, Math.min(row, count - 1)) ? Qt.StrongFocus : Qt.ClickFocus
    }

    function focusRow(index) {
        const next = Math.max(0, Math.min(count - 1, index))
        positionViewAtIndex(next, ListView.Contain)
        const item = itemAtIndex(next)
        // First the keyboard, then the stop: what has the keyboard can't cease to be one.
        if (item)
            item.action.forceActiveFocus(Qt.TabFocusReason)
        row = next
    }

    /// Moves the keyboard as the key says; other keys are left alone.
    function navigate(event) {
        const item = itemAtIndex(row)
        const page = item ? Math.max(1, Math.floor(height / (item.height + spacing)) - 1) : 1
        const steps = {
            [Qt.Key_Up]: -1, [Qt.Key_Down]: 1, [Qt.Key_PageUp]: -page, [Qt.Key_PageDown]: page,
            [Qt.Key_Home]: -count, [Qt.Key_End]: count
        }
        if (event.modifiers & ~Qt.KeypadModifier || steps[event.key] === undefined)
            return
        focusRow(row + steps[event.key])
        event.accepted = true
    }

    T.ScrollBar.vertical: T.ScrollBar {
        id: bar
        parent: list
        anchors.right: list.right
        height: list.height
        implicitWidth: 10
        padding: 2
        visible: size < 1
        minimumSize: 0.1
        onPressedChanged: if (!pressed) list.followSight()
        focusPolicy: Qt.NoFocus
        contentItem: Rectangle {
            implicitWidth: 6
            radius: 3
            color: Theme.faded(Theme.primary, bar.pressed ? 0.45 : bar.hovered ? 0.35 : 0.22)
        }
    }
}
