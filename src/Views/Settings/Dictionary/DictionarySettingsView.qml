import QtQuick
import QtQuick.Layouts
import Velloro

/// The dictionary pane: adding words, suggestions and the words themselves.
ActionList {
    id: pane
    objectName: "words"

    required property DictionarySettingsViewModel dictionary

    model: dictionary
    Accessible.name: dictionary.title

    // The header's height is known only when its lines have been broken.
    property bool wasMoved: false
    onMovementStarted: wasMoved = true

    header: ColumnLayout {
        readonly property Item field: field

        onHeightChanged: {
            if (!pane.wasMoved && pane.row === 0)
                Qt.callLater(pane.positionViewAtBeginning)
        }
        x: Theme.padding
        width: pane.width - 2 * Theme.padding
        spacing: 16

        FormSection {
            Layout.topMargin: Theme.padding
            rowSpacing: 12

            RowLayout {
                spacing: 8
                Symbol {
                    name: "plus.circle.fill"
                    size: Math.round(Theme.title2.pixelSize * 1.2)
                    color: Theme.green
                }
                ThemedText {
                    text: qsTr("Add New Word")
                    font: Theme.headline
                    Accessible.role: Accessible.Heading
                }
            }
            RowLayout {
                function takeKeyboard(reason) { field.forceActiveFocus(reason) }

                Layout.fillWidth: true
                spacing: 8
                TextEntry {
                    id: field
                    objectName: "newWord"
                    Layout.fillWidth: true
                    focus: true
                    placeholderText: qsTr("Type a word (e.g., OpenAI, GPT-4, Anthropic)")
                    label: qsTr("New word")
                    text: pane.dictionary.newWord
                    onTextEdited: pane.dictionary.newWord = text
                    onAccepted: pane.dictionary.addWord()
                }
                CapsuleButton {
                    objectName: "add"
                    kind: CapsuleButton.Prominent
                    text: qsTr("Add")
                    enabled: pane.dictionary.canAdd
                    onClicked: pane.dictionary.addWord()
                }
            }
            Note {
                objectName: "problem"
                Layout.fillWidth: true
                visible: text !== ""
                color: Theme.red
                text: pane.dictionary.problem
                Accessible.role: Accessible.AlertMessage
            }
            Note {
                Layout.fillWidth: true
                text: qsTr("Words you add help Whisper recognize brand names, technical terms, and proper nouns.")
            }
        }

        FormSection {
            title: qsTr("Quick Add")

            Flow {
                Layout.fillWidth: true
                spacing: 8
                Repeater {
                    model: pane.dictionary.suggestions
                    CapsuleButton {
                        required property int index
                        required property string modelData

                        size: CapsuleButton.Small
                        text: modelData
                        enabled: pane.dictionary.suggestionsAvailable[index]
                        onClicked: pane.dictionary.quickAdd(modelData)
                    }
                }
            }
        }

        FormSection {
            Layout.bottomMargin: Theme.padding
            visible: pane.dictionary.isEmpty
            title: pane.dictionary.title

            ColumnLayout {
                Layout.alignment: Qt.AlignHCenter
                Layout.topMargin: 20
                Layout.bottomMargin: 20
                spacing: 8
                Symbol {
                    Layout.alignment: Qt.AlignHCenter
                    name: "character.book.closed"
                    size: Math.round(Theme.largeTitle.pixelSize * 1.2)
                    color: Theme.tertiary
                }
                ThemedText {
                    Layout.alignment: Qt.AlignHCenter
                    text: qsTr("No custom words yet")
                    color: Theme.secondary
                }
                ThemedText {
                    Layout.alignment: Qt.AlignHCenter
                    text: qsTr("Add words above to improve recognition")
                    font: Theme.caption
                    color: Theme.tertiary
                }
            }
        }
        ThemedText {
            objectName: "title"
            Layout.leftMargin: 10
            Layout.bottomMargin: 6
            visible: !pane.dictionary.isEmpty
            text: pane.dictionary.title
            font: Theme.headline
            Accessible.role: Accessible.Heading
        }
    }

    footer: Item { implicitHeight: pane.count > 0 ? Theme.padding : 0 }

    // The keyboard goes from row to row; a row's trash, which it would hit unawares, is one Tab
    // further.
    delegate: Item {
        id: row

        required property int index
        required property string word
        readonly property Item action: row
        readonly property bool hasKeyboard: activeFocus || trash.activeFocus

        readonly property bool isFirst: index === 0
        readonly property bool isLast: index === pane.count - 1

        x: Theme.padding
        width: pane.width - 2 * Theme.padding
        height: content.implicitHeight + 8
        activeFocusOnTab: hasKeyboard || pane.isStop(index)
        onHasKeyboardChanged: pane.follow(row)
        onIndexChanged: pane.follow(row)
        Accessible.role: Accessible.ListItem
        Accessible.name: word
        Accessible.description: qsTr("Press Delete to remove")
        Accessible.focusable: true

        Keys.forwardTo: [deletion]
        Keys.onPressed: event => pane.navigate(event)
        PressKeys { id: deletion; button: trash; keys: [Qt.Key_Delete] }
        FocusRing { control: row; gap: 0; radius: 8 }

        // The rows together are one rounded group: each is a window onto a larger rectangle.
        Item {
            anchors.fill: parent
            clip: true
            RoundedRectangle {
                width: parent.width
                y: row.isFirst ? 0 : -20
                height: parent.height - y + (row.isLast ? 0 : 20)
                radius: 8
                color: Theme.group
                borderWidth: 1
                borderColor: Theme.separator
            }
            Divider {
                visible: !row.isFirst
                x: 10
                width: parent.width - 20
            }
        }
        RowLayout {
            id: content
            anchors.fill: parent
            anchors.leftMargin: 10
            anchors.rightMargin: 6
            spacing: 8
            ThemedText {
                Layout.fillWidth: true
                text: row.word.replace(/[\r\n\u2028\u2029]+/g, " ")
                horizontalAlignment: Text.AlignLeft
                font: Theme.bodyMedium
                elide: Text.ElideRight
                maximumLineCount: 1
            }
            IconButton {
                id: trash
                objectName: "trash"
                focusPolicy: row.hasKeyboard ? Qt.StrongFocus : Qt.ClickFocus
                destroys: true
                symbol: "trash"
                symbolSize: Math.round(Theme.caption.pixelSize * 1.2)
                color: Theme.red
                text: qsTr("Remove %1").arg(row.word)
                help: qsTr("Remove")
                onClicked: {
                    // The next word takes this one's place, and the keyboard stays there.
                    const list = pane
                    const place = row.index
                    const hadKeyboard = row.hasKeyboard
                    list.dictionary.removeWord(row.word)
                    if (hadKeyboard && list.count > 0)
                        list.focusRow(place)
                    else if (hadKeyboard)
                        list.headerItem.field.forceActiveFocus(Qt.TabFocusReason)
                }
            }
        }
    }
}
