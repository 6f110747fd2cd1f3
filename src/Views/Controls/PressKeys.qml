import QtQuick
import QtQuick.Templates as T
import Velloro

/// Keys that press a button, once each however long they are held. What forwards its keys to it
/// (`Keys.forwardTo`) need not be the button.
Item {
    required property T.AbstractButton button
    property list<int> keys: [Qt.Key_Return, Qt.Key_Enter]

    /// A key was pressed since the keyboard came.
    property bool isUsed: false

    // The space bar, which the toolkit looks after, is released by every repeat of a held key.
    function isHeld(event) {
        return event.isAutoRepeat && [Qt.Key_Space, ...keys].includes(event.key)
    }

    Keys.onPressed: event => {
        isUsed = true
        event.accepted = isHeld(event) || keys.includes(event.key)
        if (event.accepted && !event.isAutoRepeat)
            button.clicked()
    }
    Keys.onReleased: event => event.accepted = isHeld(event)
}
