import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A model of the catalogue; the control at its right manages its file and loads it.
T.Control {
    id: row

    required property CatalogModelRowViewModel model
    /// The keyboard waits at the row where only the trash is left to take it.
    function takeKeyboard(reason) { forceActiveFocus(reason) }

    hoverEnabled: false
    implicitWidth: content.implicitWidth + 16
    implicitHeight: content.implicitHeight + 12
    Accessible.role: Accessible.Grouping
    Accessible.name: model.displayName
    Accessible.description: model.isSelected ? qsTr("Selected") : ""
    activeFocusOnTab: activeFocus
    Accessible.focusable: activeFocus

    RoundedRectangle {
        anchors.fill: parent
        radius: 6
        color: row.model.isSelected ? Theme.faded(Theme.accent, 0.1) : "transparent"
    }
    FocusRing { control: row; gap: 0; radius: 6 }

    RowLayout {
        id: content
        anchors.fill: parent
        anchors.leftMargin: 8
        anchors.rightMargin: 8
        spacing: 12

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 4

            RowLayout {
                spacing: 6
                ThemedText {
                    text: row.model.displayName
                    font: Theme.bodyMedium
                }
                Badge {
                    visible: text !== ""
                    text: row.model.badgeText
                    font: Theme.caption
                    groundOpacity: 0.15
                    verticalPadding: 1
                }
                Badge {
                    visible: row.model.isEnglishOnly
                    text: "EN"
                    font: Theme.caption
                    tint: Theme.blue
                    groundOpacity: 0.15
                    horizontalPadding: 4
                    verticalPadding: 1
                    radius: 4
                }
                Symbol {
                    visible: row.model.isSelected
                    name: "checkmark.circle.fill"
                    size: Math.round(14 * Theme.textScale)
                    color: Theme.green
                    Accessible.role: Accessible.StaticText
                    Accessible.name: qsTr("Selected")
                }
            }
            Flow {
                Layout.fillWidth: true
                spacing: 10
                ThemedText {
                    width: Math.max(implicitWidth, Math.ceil(widestSize.advanceWidth))
                    text: row.model.fileSizeText
                    font: Theme.caption
                    color: Theme.secondary
                    TextMetrics {
                        id: widestSize
                        font: Theme.caption
                        text: "999 MB"
                    }
                }
                Rating {
                    label: qsTr("Accuracy:")
                    stars: row.model.accuracyStars
                    color: Theme.yellow
                }
                Rating {
                    label: qsTr("Speed:")
                    stars: row.model.speedStars
                    color: Theme.green
                }
            }
        }
        ModelFileControl {
            Layout.alignment: Qt.AlignRight | Qt.AlignVCenter
            model: row.model
            name: row.model.displayName
            notDownloaded: downloadButton
            downloaded: loadedButtons
            failed: retryButton
        }
    }

    component Rating: Row {
        property alias label: caption.text
        property alias stars: rating.stars
        property alias color: rating.color

        spacing: 4
        ThemedText {
            id: caption
            font: Theme.caption
            color: Theme.secondary
            Accessible.ignored: true
        }
        StarRating {
            id: rating
            anchors.verticalCenter: parent.verticalCenter
            starSize: Theme.caption.pixelSize
            label: caption.text
        }
    }

    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    Component {
        id: downloadButton
        CapsuleButton {
            kind: CapsuleButton.Prominent
            size: CapsuleButton.Small
            text: qsTr("Download")
            Accessible.description: row.model.displayName
            onClicked: row.model.download()
        }
    }
    Component {
        id: loadedButtons
        RowLayout {
            readonly property Item action: select.visible ? select : trash

            spacing: 6
            CapsuleButton {
                id: select
                visible: !row.model.isSelected
                size: CapsuleButton.Small
                text: qsTr("Select")
                Accessible.description: row.model.displayName
                onClicked: row.model.select()
            }
            IconButton {
                id: trash
                symbol: "trash"
                symbolSize: 14 * Theme.textScale
                color: Theme.red
                destroys: true
                text: qsTr("Delete model")
                Accessible.description: row.model.displayName
                onClicked: row.model.deleteModel()
            }
        }
    }
    Component {
        id: retryButton
        CapsuleButton {
            id: retry
            size: CapsuleButton.Small
            tint: Theme.red
            text: qsTr("Retry")
            Accessible.description: row.model.detail === ""
                ? row.model.displayName : row.model.displayName + ": " + row.model.detail
            onClicked: row.model.download()
            HelpTip {
                text: row.model.detail
                visible: text !== "" && (retry.hovered || retry.visualFocus)
            }
        }
    }
    // qmllint enable unqualified
}
