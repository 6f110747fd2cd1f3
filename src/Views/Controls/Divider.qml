import QtQuick
import Velloro

/// A hairline between two things above each other.
RoundedRectangle {
    implicitWidth: 100
    implicitHeight: 1
    color: Theme.separator
    Accessible.ignored: true
}
