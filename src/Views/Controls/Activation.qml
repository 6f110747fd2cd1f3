import QtQuick
import Velloro

/// What a button, of whichever kind, makes of keys, of double clicks and of its own disappearance.
/// A child of the button, which forwards its keys to it.
PressKeys {
    id: activation

    /// How the keyboard came to the button. Where it has been used there, its place is to be seen.
    property int arrival: Qt.OtherFocusReason
    readonly property int reason: isUsed ? Qt.TabFocusReason : arrival

    // Where somebody listens for double clicks, their second click is no click. What it would meet
    // may be another row than the one that was aimed at, or the button of the next step.
    Connections {
        target: activation.button
        function onDoubleClicked() {}
        function onActiveFocusChanged() {
            if (!activation.button.activeFocus)
                return
            activation.arrival = activation.button.focusReason
            activation.isUsed = false
        }
    }

    // Both follow the button's: one that goes hands the keyboard on, ...
    onVisibleChanged: {
        if (!button.visible && button.activeFocus)
            FocusOrder.handOn(button, reason)
    }
    // ... and one that is disabled has lost it to what is around it.
    onEnabledChanged: {
        if (!button.enabled && button.focus
            && FocusOrder.isAround(button.Window.activeFocusItem, button))
            FocusOrder.handOn(button, reason)
    }
}
