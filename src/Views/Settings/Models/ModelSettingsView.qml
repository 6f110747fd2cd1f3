import QtQuick
import QtQuick.Layouts
import Velloro

/// The models pane: which model each preset stands for, and all models there are.
ScrollArea {
    id: pane

    required property ModelSettingsViewModel model

    contentHeight: column.implicitHeight + 2 * Theme.padding
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Model")

    Component.onCompleted: model.reset()

    /// The group that was toggled last stays where it was pressed, whatever closes above it.
    property Item held
    property real heldAt: 0

    ColumnLayout {
        id: column
        x: Theme.padding
        y: Theme.padding
        width: pane.availableWidth - 2 * Theme.padding
        spacing: 12

        RoundedRectangle {
            Layout.fillWidth: true
            implicitHeight: presets.implicitHeight + 24
            radius: 8
            color: Theme.faded(Theme.secondary, 0.1)

            ColumnLayout {
                id: presets
                anchors.fill: parent
                anchors.margins: 12
                spacing: 8

                ColumnLayout {
                    Layout.fillWidth: true
                    spacing: 2
                    ThemedText {
                        text: qsTr("Quick Presets")
                        font: Theme.headline
                        Accessible.role: Accessible.Heading
                    }
                    Note {
                        Layout.fillWidth: true
                        text: qsTr("Assign models to presets for quick switching")
                    }
                }
                Repeater {
                    model: pane.model.presets
                    PresetConfigRow {
                        required property PresetConfigRowViewModel modelData

                        Layout.fillWidth: true
                        model: modelData
                    }
                }
            }
        }

        Divider { Layout.fillWidth: true }

        ThemedText {
            text: qsTr("All Models")
            font: Theme.headline
            Accessible.role: Accessible.Heading
        }
        ThemedText {
            // Beside the picker where there is room for both.
            visible: !category.hasRoomForLabel
            text: category.label
            Accessible.ignored: true
        }
        SegmentedPicker {
            id: category
            objectName: "category"

            readonly property bool hasRoomForLabel:
                categoryWidth.advanceWidth + segmentsWidth + 24 <= column.width

            Layout.fillWidth: true
            label: qsTr("Category")
            showsLabel: hasRoomForLabel
            options: pane.model.categories
            currentIndex: pane.model.categoryIndex
            onActivated: index => pane.model.selectCategory(index)
        }
        TextMetrics {
            id: categoryWidth
            font: Theme.body
            text: category.label
        }
        Note {
            Layout.fillWidth: true
            text: pane.model.categoryDescription
        }

        Divider { Layout.fillWidth: true }

        Repeater {
            model: pane.model.groups
            // qmllint disable unqualified
            ColumnLayout {
                id: group

                required property int index
                required property ModelGroupViewModel modelData

                Layout.fillWidth: true
                spacing: 8
                onYChanged: {
                    if (pane.held !== group)
                        return
                    pane.contentY = Math.max(0, pane.contentY + y - pane.heldAt)
                    pane.heldAt = y
                }

                DisclosureGroup {
                    Layout.fillWidth: true
                    title: group.modelData.title
                    detail: group.modelData.countText
                    isOpen: group.modelData.isOpen
                    onToggled: {
                        pane.held = group
                        pane.heldAt = group.y
                        pane.model.toggleGroup(group.index)
                    }
                    content: ColumnLayout {
                        spacing: 2
                        Repeater {
                            model: group.modelData.rows
                            CatalogModelRow {
                                required property CatalogModelRowViewModel modelData

                                Layout.fillWidth: true
                                model: modelData
                            }
                        }
                    }
                }
                Divider { Layout.fillWidth: true }
            }
            // qmllint enable unqualified
        }

        RowLayout {
            Layout.fillWidth: true
            spacing: 6
            Symbol {
                name: "folder"
                size: Math.round(14 * Theme.textScale)
                color: Theme.secondary
            }
            ThemedText {
                objectName: "modelsDirectory"
                Layout.fillWidth: true
                text: pane.model.modelsDirectory
                font: Theme.caption
                color: Theme.secondary
                wrapMode: Text.WrapAnywhere
            }
        }
    }
}
