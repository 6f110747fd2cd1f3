import QtQuick
import Velloro

/// A hairline between two things above each other.
Rectangle {
    implicitWidth: 100
    implicitHeight: 1
    color: Theme.separator
    Accessible.ignored: true
}
