pragma ComponentBehavior: Bound
import QtQuick
import Velloro

/// Five stars, the first `stars` of them filled.
Row {
    id: rating

    property int stars: 0
    property color color: Theme.yellow
    property real starSize: 11
    /// What is rated, for the screen reader.
    property string label

    spacing: 1
    Accessible.role: Accessible.StaticText
    Accessible.name: qsTr("%1 %2 of 5 stars").arg(label).arg(stars).trim()

    Repeater {
        model: 5
        Symbol {
            required property int index
            readonly property bool isFilled: index < rating.stars

            name: isFilled ? "star.fill" : "star"
            size: rating.starSize
            color: isFilled ? rating.color : Theme.tertiary
        }
    }
}
