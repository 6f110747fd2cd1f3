import QtQuick
import Velloro

/// Text in the theme's body font and primary colour.
Text {
    font: Theme.body
    color: Theme.primary
    textFormat: Text.PlainText
    Accessible.role: Accessible.StaticText
    Accessible.name: text
    Accessible.ignored: text === ""
}
