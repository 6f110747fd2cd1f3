import QtQuick
import QtQuick.Layouts
import Velloro

/// A column of sections that scrolls when it does not fit.
ScrollArea {
    id: form

    default property alias sections: column.data

    contentHeight: column.implicitHeight + 2 * Theme.padding

    ColumnLayout {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: form.availableWidth - 2 * Theme.padding
        spacing: 16
    }
}
