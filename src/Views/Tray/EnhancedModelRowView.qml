import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A preset in the panel: a click selects it, the control at its right manages its model's file.
// The kind of button is the role that the toolkit tells of it.
T.RadioButton {
    id: row

    required property EnhancedModelRowViewModel model
    /// The user wants the next row (1) or the one before (-1).
    signal moveRequested(int step)

    readonly property color tint: Theme[model.tint]

    text: model.title
    implicitWidth: 200
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    leftPadding: 8
    rightPadding: 6
    topPadding: 6
    bottomPadding: 6
    focusPolicy: Qt.StrongFocus
    checked: model.isSelected
    hoverEnabled: true

    onClicked: model.select()
    /// From its control, when that goes.
    function takeKeyboard(reason) { forceActiveFocus(reason) }
    Keys.forwardTo: [activation]
    Keys.onUpPressed: moveRequested(-1)
    Keys.onDownPressed: moveRequested(1)
    Activation { id: activation; button: row }

    Accessible.role: Accessible.RadioButton
    Accessible.name: qsTr("%1, %2").arg(model.title).arg(model.label)
    Accessible.checkable: true
    Accessible.checked: checked
    Accessible.onPressAction: clicked()
    Accessible.onToggleAction: clicked()

    contentItem: RowLayout {
        spacing: 8

        ColumnLayout {
            spacing: 2

            RowLayout {
                spacing: 6
                ThemedText {
                    text: row.model.title
                    font: Theme.bodyMedium
                    Accessible.ignored: true
                }
                Badge {
                    text: row.model.label
                    tint: row.tint
                    verticalPadding: 1
                }
            }
            ThemedText {
                text: qsTr("Preset: %1").arg(row.model.label)
                font: Theme.caption2
                color: Theme.secondary
                Accessible.ignored: true
            }
        }

        Item { Layout.fillWidth: true }

        Symbol {
            name: "checkmark"
            size: Math.round(14 * Theme.textScale)
            color: Theme.accentText
            scale: row.model.isSelected ? 1 : 0.4
            opacity: row.model.isSelected ? 1 : 0
            visible: opacity > 0
            Behavior on scale { NumberAnimation { duration: 150; easing.type: Easing.OutQuad } }
            Behavior on opacity { NumberAnimation { duration: 150; easing.type: Easing.OutQuad } }
        }

        ModelFileControl {
            Layout.minimumWidth: 24
            Layout.alignment: Qt.AlignRight | Qt.AlignVCenter
            model: row.model
            name: row.model.title
            notDownloaded: downloadButton
            downloaded: deleteButton
            failed: retryButton
            font: Theme.caption2
            barWidth: 40
            margin: 4
        }
    }

    background: RoundedRectangle {
        radius: 7
        color: row.down ? Theme.faded(Theme.primary, 0.14)
             : row.hovered ? Theme.faded(Theme.primary, 0.07) : "transparent"
        FocusRing { control: row; gap: 0; radius: 7 }
    }

    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    Component {
        id: downloadButton
        IconButton {
            symbol: "arrow.down.circle"
            symbolSize: 16 * Theme.textScale
            color: Theme.blue
            text: qsTr("Download model")
            Accessible.description: row.model.title
            onClicked: row.model.download()
        }
    }
    Component {
        id: deleteButton
        IconButton {
            symbol: "trash"
            symbolSize: 14 * Theme.textScale
            color: Theme.red
            destroys: true
            text: qsTr("Delete model")
            Accessible.description: row.model.title
            onClicked: row.model.deleteModel()
        }
    }
    Component {
        id: retryButton
        IconButton {
            symbol: "exclamationmark.triangle"
            symbolSize: 16 * Theme.textScale
            color: Theme.orange
            text: qsTr("Retry download")
            help: row.model.detail === "" ? text : text + "\n" + row.model.detail
            onClicked: row.model.download()
        }
    }
    // qmllint enable unqualified
}
