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

    // A list that fills from nothing may have no current row, or one beyond its end.
    function policyOf(index) {
        return index === Math.max(0, Math.min(currentIndex, count - 1)) ? Qt.StrongFocus
                                                                       : Qt.ClickFocus
    }

    function focusRow(index) {
        currentIndex = Math.max(0, Math.min(count - 1, index))
        positionViewAtIndex(currentIndex, ListView.Contain)
        if (currentItem)
            currentItem.action.forceActiveFocus(Qt.TabFocusReason)
    }

    /// Moves the keyboard as the key says; other keys are left alone.
    function navigate(event) {
        const row = currentItem ? currentItem.height + spacing : height
        const page = Math.max(1, Math.floor(height / row) - 1)
        const steps = {
            [Qt.Key_Up]: -1, [Qt.Key_Down]: 1, [Qt.Key_PageUp]: -page, [Qt.Key_PageDown]: page,
            [Qt.Key_Home]: -count, [Qt.Key_End]: count
        }
        if (event.modifiers & ~Qt.KeypadModifier || steps[event.key] === undefined)
            return
        focusRow(currentIndex + steps[event.key])
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
        focusPolicy: Qt.NoFocus
        contentItem: Rectangle {
            implicitWidth: 6
            radius: 3
            color: Theme.faded(Theme.primary, bar.pressed ? 0.45 : bar.hovered ? 0.35 : 0.22)
        }
    }
}
