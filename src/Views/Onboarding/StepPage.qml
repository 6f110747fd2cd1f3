import QtQuick
import QtQuick.Layouts
import Velloro

/// A step of the first run: a centred column.
Item {
    id: page

    default property alias content: column.data
    property alias spacing: column.spacing
    property real verticalPadding: Theme.padding

    implicitHeight: column.implicitHeight + 2 * verticalPadding
    Accessible.role: Accessible.Pane

    ColumnLayout {
        id: column
        anchors.verticalCenter: parent.verticalCenter
        x: Theme.padding
        width: parent.width - 2 * Theme.padding
    }
}
