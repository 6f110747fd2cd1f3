import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// The settings window's content: a row of tabs and the pane of the chosen one.
FocusScope {
    id: view

    required property SettingsViewModel model
    property int currentIndex: 0

    component Tab: QtObject {
        property string title
        property string symbol
        property Component pane
    }
    readonly property list<Tab> tabs: [
        Tab { title: qsTr("General"); symbol: "gear"; pane: generalPane },
        Tab { title: qsTr("Model"); symbol: "cpu"; pane: modelPane },
        Tab { title: qsTr("Dictionary"); symbol: "character.book.closed"; pane: dictionaryPane },
        Tab { title: qsTr("History"); symbol: "clock"; pane: historyPane },
        Tab { title: qsTr("Privacy"); symbol: "hand.raised"; pane: privacyPane }
    ]

    implicitWidth: Math.round(500 * Theme.growth)
    implicitHeight: Math.round(400 * Theme.growth)
    focus: true
    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("Settings")

    /// Shows a pane and takes the keyboard to its tab.
    function show(index, reason) {
        currentIndex = (index + tabs.length) % tabs.length
        repeater.itemAt(currentIndex).forceActiveFocus(reason)
    }

    // A loader makes no bound components before Qt 6.5.
    // qmllint disable unqualified
    Component {
        id: generalPane
        GeneralSettingsView { appState: view.model.appState; model: view.model.general }
    }
    Component {
        id: modelPane
        ModelSettingsView { model: view.model.models }
    }
    Component {
        id: dictionaryPane
        DictionarySettingsView { dictionary: view.model.dictionary }
    }
    Component {
        id: historyPane
        HistoryView { model: view.model.history }
    }
    Component {
        id: privacyPane
        PrivacySettingsView { appState: view.model.appState; help: view.model.permissionHelp }
    }
    // qmllint enable unqualified

    // Reaches the window when no menu or field has a use for it.
    Keys.onEscapePressed: view.model.close()
    Shortcut {
        sequences: [StandardKey.Close] // qmllint disable unqualified
        onActivated: view.model.close()
    }
    Shortcut {
        sequences: ["Ctrl+Tab", "Ctrl+PgDown"]
        onActivated: view.show(view.currentIndex + 1, Qt.ShortcutFocusReason)
    }
    Shortcut {
        sequences: ["Ctrl+Shift+Tab", "Ctrl+PgUp"]
        onActivated: view.show(view.currentIndex - 1, Qt.ShortcutFocusReason)
    }

    Rectangle {
        anchors.fill: parent
        color: Theme.window
    }

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        Row {
            id: tabBar
            Layout.alignment: Qt.AlignHCenter
            Layout.topMargin: 6
            Layout.bottomMargin: 6
            spacing: 4
            Accessible.role: Accessible.PageTabList
            Accessible.name: qsTr("Settings")

            Repeater {
                id: repeater
                model: view.tabs

                // A button of this kind, since its kind is the role that the toolkit tells.
                // qmllint disable unqualified
                T.TabButton {
                    id: tab

                    required property int index
                    required property Tab modelData

                    objectName: "tab" + index
                    text: modelData.title
                    font: Theme.caption
                    checked: index === view.currentIndex
                    focus: checked
                    // One stop for the Tab key; the arrows do the rest.
                    focusPolicy: checked ? Qt.StrongFocus : Qt.ClickFocus
                    hoverEnabled: true
                    padding: 5
                    implicitWidth: Math.max(72, contentItem.implicitWidth + 16)
                    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
                    readonly property color foreground: checked ? Theme.accentText : Theme.secondary

                    Accessible.role: Accessible.PageTab
                    Accessible.name: text
                    Accessible.selectable: true
                    Accessible.selected: checked
                    Accessible.onPressAction: clicked()

                    onClicked: view.show(index, Qt.MouseFocusReason)
                    Keys.onLeftPressed: view.show(index - 1, Qt.TabFocusReason)
                    Keys.onRightPressed: view.show(index + 1, Qt.TabFocusReason)

                    contentItem: Column {
                        spacing: 3
                        Symbol {
                            anchors.horizontalCenter: parent.horizontalCenter
                            name: tab.modelData.symbol
                            size: Math.round(20 * Theme.textScale)
                            color: tab.foreground
                        }
                        Text {
                            anchors.horizontalCenter: parent.horizontalCenter
                            text: tab.text
                            font: tab.font
                            color: tab.foreground
                            textFormat: Text.PlainText
                        }
                    }
                    background: RoundedRectangle {
                        radius: 6
                        color: Theme.faded(Theme.primary,
                                           tab.checked ? 0.08 : tab.hovered ? 0.05 : 0)
                        FocusRing { control: tab; gap: 0 }
                    }
                }
                // qmllint enable unqualified
            }
        }
        Divider { Layout.fillWidth: true }
        Loader {
            objectName: "pane"
            Layout.fillWidth: true
            Layout.fillHeight: true
            sourceComponent: view.tabs[view.currentIndex].pane
        }
    }
}
