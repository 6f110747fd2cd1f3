import QtQuick
import Velloro

/// An explanation in small dimmed letters that wraps.
ThemedText {
    font: Theme.caption
    color: Theme.secondary
    wrapMode: Text.WordWrap
}
