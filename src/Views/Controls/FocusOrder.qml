pragma Singleton
import QtQuick

/// Where the keyboard goes when what had it can't keep it.
QtObject {
    /// Whether `item` is in `around`, however deep.
    function isAround(around, item) {
        for (let above = item.parent; above; above = above.parent) {
            if (above === around)
                return true
        }
        return false
    }

    /// Gives the keyboard of `item` to the nearest thing around it that takes it over (its function
    /// `takeKeyboard`), or else to the next control. Never to one that `destroys`: whoever goes on
    /// pressing would do harm.
    function handOn(item, reason) {
        for (let above = item.parent; above; above = above.parent) {
            if (above.takeKeyboard) {
                above.takeKeyboard(reason)
                return
            }
        }
        harmlessAfter(item).forceActiveFocus(reason)
    }

    /// The next control in the order of the Tab key that destroys nothing.
    function harmlessAfter(item) {
        let next = item.nextItemInFocusChain()
        while (next.destroys && next !== item)
            next = next.nextItemInFocusChain()
        return next
    }
}
