import QtQuick
import Velloro

/// A place that holds one control or another. Where the one that is replaced had the keyboard, the
/// new one gets it, as visibly as before, unless it destroys. A component that is no control tells
/// the control in it by the property `action`.
Loader {
    id: loader

    /// How the keyboard came here.
    property int reason: Qt.OtherFocusReason

    Connections {
        target: loader.Window.window
        function onActiveFocusItemChanged() {
            const item = loader.Window.activeFocusItem
            if (loader.activeFocus && item !== loader && item.focusReason !== undefined)
                loader.reason = item.focusReason
        }
    }
    onLoaded: {
        if (!activeFocus)
            return
        const control = item.action ?? item
        if (control.destroys)
            FocusOrder.handOn(control, reason)
        else
            control.forceActiveFocus(reason)
    }
}
