import QtQuick
import QtQuick.Templates as T
import Velloro

/// A long list with the keyboard in one of its rows. The list is one stop for the Tab key; Up and
/// Down, Page Up and Page Down, Home and End move between the rows. A row tells by the property
/// `action` what takes the keyboard in it: that is a stop where `isStop(index)`, hands its keys to
/// `navigate`, and when the row gets the keyboard (`hasKeyboard`) or another index, it calls
/// `follow`.
ListView {
    id: list

    clip: true
    boundsBehavior: Flickable.StopAtBounds
    reuseItems: false
    keyNavigationEnabled: false
    highlightFollowsCurrentItem: false
    cacheBuffer: 200
    // A finger drags the list; a mouse has its wheel and the bar.
    interactive: !mouse.active
    PointHandler { id: mouse; acceptedDevices: PointerDevice.Mouse | PointerDevice.TouchPad }
    Accessible.role: Accessible.List

    /// The row that Tab reaches. The view's own current item would take the keyboard from
    /// what is typed into above the rows.
    property int row: 0

    currentIndex: -1
    // Where the user has scrolled to, the keyboard goes on: with a row in sight, or just below it.
    onContentYChanged: {
        if (itemAtIndex(row))
            return
        const index = [height / 2, height, height + cacheBuffer / 2]
            .map(y => indexAt(width / 2, contentY + y)).find(found => found >= 0)
        row = index ?? row
    }

    function isStop(index) {
        return index === Math.max(0, Math.min(row, count - 1))
    }

    function follow(item) {
        if (item.hasKeyboard)
            row = item.index
    }

    function focusRow(index) {
        const next = Math.max(0, Math.min(count - 1, index))
        // How high the rows are that are not there yet is a guess, which the first positioning mends.
        for (let pass = 0; pass < 2; ++pass) {
            if (next === count - 1)
                positionViewAtEnd()
            else
                positionViewAtIndex(next, ListView.Contain)
            forceLayout()
        }
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

    FocusFollower { view: list }

    T.ScrollBar.vertical: T.ScrollBar {
        id: bar
        parent: list
        anchors.right: list.right
        height: list.height
        implicitWidth: 10
        padding: 2
        visible: size < 1
        minimumSize: 0.1
        focusPolicy: Qt.NoFocus
        contentItem: RoundedRectangle {
            implicitWidth: 6
            radius: 3
            color: Theme.faded(Theme.primary, bar.pressed ? 0.45 : bar.hovered ? 0.35 : 0.22)
        }
    }
}
