import QtQuick
import QtQuick.Layouts
import Velloro

/// The capsule beside the pointer while a dictation is under way.
Item {
    id: pill

    required property RecordingPillViewModel model

    /// Text grows with the desktop's setting as far as the capsule has room.
    readonly property real textScale: Math.min(Theme.textScale, 1.15)

    width: 260
    height: 48
    Accessible.role: Accessible.StatusBar
    Accessible.name: model.statusText

    RoundedRectangle {
        anchors.fill: parent
        radius: 24
        color: Theme.material
    }
    RoundedRectangle {
        anchors.fill: parent
        radius: 24
        color: "transparent"
        borderWidth: 0.5
        borderColor: Qt.rgba(1, 1, 1, 0.15)
    }

    RowLayout {
        anchors {
            fill: parent
            leftMargin: 16
            rightMargin: 16
            // Above and below the padding is 12; two lines together reach into it alike.
        }
        spacing: 12

        Loader {
            id: indicator
            objectName: "indicator"
            Layout.alignment: Qt.AlignVCenter
            sourceComponent: {
                switch (pill.model.state) {
                case Domain.TranscriptionState.listening: return listeningWaveform
                case Domain.TranscriptionState.transcribing: return spinner
                case Domain.TranscriptionState.inserting: return check
                default: return dot
                }
            }
        }

        ColumnLayout {
            Layout.alignment: Qt.AlignVCenter
            Layout.maximumWidth: 200
            spacing: 3

            ThemedText {
                objectName: "statusText"
                text: pill.model.statusText
                font.pixelSize: Math.round(13 * pill.textScale)
                font.weight: Font.Medium
            }
            Loader {
                objectName: "streamingLine"
                active: pill.model.hasStreamingLine
                visible: active
                Layout.maximumWidth: 200
                Layout.preferredWidth: 200
                Layout.fillWidth: true
                sourceComponent: streamingText
            }
        }

        Item {
            Layout.fillWidth: true
            Layout.minimumWidth: 8
        }

        ThemedText {
            objectName: "clock"
            Layout.alignment: Qt.AlignVCenter
            visible: pill.model.state === Domain.TranscriptionState.listening
            text: pill.model.clockText
            color: Theme.secondary
            font.family: Theme.monospacedFamily
            font.pixelSize: Math.round(12 * pill.textScale)
            font.weight: Font.Medium
        }
    }

    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    Component {
        id: dot
        RoundedRectangle {
            implicitWidth: 10
            implicitHeight: 10
            radius: 5
            color: Theme.secondary
        }
    }

    Component {
        id: listeningWaveform
        RoundedBars {
            implicitWidth: 27
            implicitHeight: 20
            color: Theme.red
            radius: 2
            Repeater {
                model: 5
                Item {
                    required property int index

                    x: 6 * index
                    y: (20 - height) / 2
                    width: 3
                    height: pill.model.shownBarHeights[index]
                }
            }
        }
    }

    Component {
        id: spinner
        Spinner {}
    }

    Component {
        id: check
        Symbol {
            name: "checkmark.circle.fill"
            size: 18
            color: Theme.green
        }
    }

    Component {
        id: streamingText
        Item {
            id: line
            implicitHeight: words.implicitHeight

            // The text comes into view as its line grows.
            Item {
                id: words
                width: Math.min(text.implicitWidth, line.width - cursor.width)
                height: parent.height
                implicitHeight: text.implicitHeight
                clip: true
                Behavior on width {
                    NumberAnimation {
                        duration: pill.model.revealDuration
                        easing.type: Easing.OutQuad
                    }
                }
                ThemedText {
                    id: text
                    width: Math.min(implicitWidth, line.width - cursor.width)
                    text: pill.model.displayedText
                    elide: Text.ElideLeft
                    // A cut text is narrower than its room; it stays at the cursor.
                    horizontalAlignment: truncated ? Text.AlignRight : Text.AlignLeft
                    maximumLineCount: 1
                    color: Theme.faded(Theme.primary, 0.8)
                    font.pixelSize: Math.round(12 * pill.textScale)
                }
            }
            Text {
                id: cursor
                objectName: "cursor"
                x: words.width
                width: implicitWidth
                text: "|"
                visible: pill.model.hasCursor
                opacity: pill.model.cursorVisible ? 1 : 0
                color: Theme.blue
                font.pixelSize: Math.round(12 * pill.textScale)
                font.weight: Font.Light
                Behavior on opacity {
                    NumberAnimation { duration: 100; easing.type: Easing.InOutQuad }
                }
            }
        }
    }
    // qmllint enable unqualified
}
