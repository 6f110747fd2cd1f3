import QtQuick
import QtQuick.Layouts
import Velloro

/// A line of a step in the middle of its column.
ThemedText {
    Layout.fillWidth: true
    horizontalAlignment: Text.AlignHCenter
    wrapMode: Text.WordWrap
}
