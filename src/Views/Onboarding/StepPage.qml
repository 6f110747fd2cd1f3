import QtQuick
import QtQuick.Layouts
import Velloro

/// A step of the first run: a centred column.
Item {
    id: page

    default property alias content: column.data
    property alias spacing: column.spacing
    property real verticalPadding: Theme.padding
    /// How much of the column came at its end since the step was shown. What is above it stays where
    /// it is, under the pointer, as long as there is room.
    property real addition: 0

    implicitHeight: column.implicitHeight + 2 * verticalPadding
    Accessible.role: Accessible.Pane

    ColumnLayout {
        id: column
        x: Theme.padding
        y: Math.max(page.verticalPadding,
                    Math.min((page.height - height + page.addition) / 2,
                             page.height - page.verticalPadding - height))
        width: parent.width - 2 * Theme.padding
    }
}
