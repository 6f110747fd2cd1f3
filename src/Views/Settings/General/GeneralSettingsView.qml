import QtQuick
import QtQuick.Layouts
import Velloro

/// The general pane: hotkey, language and behaviour.
GroupedForm {
    id: pane

    required property AppState appState
    required property GeneralSettingsViewModel model
    /// What a section leaves to its rows.
    readonly property real rowWidth: availableWidth - 2 * (Theme.padding + 10)

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("General")

    /// A switch with a note below it. No layout: one would keep the height that the text had while
    /// there was little room.
    component BehaviorRow: Column {
        id: behavior

        property alias name: control.objectName
        property alias text: control.text
        property alias checked: control.checked
        property string note
        readonly property bool isRevealedWhole: true
        signal toggled(bool checked)

        Layout.fillWidth: true
        spacing: 2

        ToggleSwitch {
            id: control
            width: behavior.width
            onToggled: behavior.toggled(checked)
            Accessible.description: behavior.note
        }
        Note {
            width: behavior.width - control.indicator.width - 14
            visible: text !== ""
            text: behavior.note
        }
    }

    FormSection {
        title: qsTr("Hotkey")

        RowLayout {
            Layout.fillWidth: true
            spacing: 12
            ThemedText {
                id: hotkeyLabel
                Layout.alignment: Qt.AlignTop
                Layout.topMargin: 6
                text: qsTr("Activation Hotkey")
            }
            Item { Layout.fillWidth: true }
            HotkeyRecorder {
                model: pane.model.hotkey
                maximumWidth: pane.rowWidth - hotkeyLabel.implicitWidth - 24
            }
        }
        Note {
            Layout.fillWidth: true
            text: qsTr("Supports complex combos like ⌘⌥B")
        }
        Note {
            objectName: "hotkeyLimits"
            Layout.fillWidth: true
            visible: text !== ""
            text: pane.model.hotkeyLimits
        }
        SegmentedPicker {
            objectName: "recordingMode"
            Layout.fillWidth: true
            label: qsTr("Recording Mode")
            options: pane.model.recordingModes
            currentIndex: pane.appState.recordingMode
            onActivated: index => pane.appState.recordingMode = index
        }
    }

    FormSection {
        title: qsTr("Language")

        // Beside each other where there is room for both.
        GridLayout {
            Layout.fillWidth: true
            columns: languageLabel.implicitWidth + columnSpacing + language.implicitWidth
                <= pane.rowWidth ? 2 : 1
            columnSpacing: 12
            rowSpacing: 6
            ThemedText {
                id: languageLabel
                Layout.fillWidth: true
                text: qsTr("Transcription Language")
                elide: Text.ElideRight
            }
            PopUpButton {
                id: language
                objectName: "language"
                Layout.alignment: Qt.AlignRight
                Layout.maximumWidth: pane.rowWidth
                label: qsTr("Transcription Language")
                entries: pane.model.languages
                isAsWideAsEntries: true
                currentIndex: pane.appState.selectedLanguage
                onActivated: index => pane.appState.selectedLanguage = index
            }
        }
    }

    FormSection {
        title: qsTr("Behavior")

        BehaviorRow {
            name: "playSounds"
            text: qsTr("Play sounds")
            checked: pane.appState.playSounds
            onToggled: checked => pane.appState.playSounds = checked
        }
        BehaviorRow {
            name: "insertAsPlainText"
            text: qsTr("Insert as plain text")
            checked: pane.appState.insertAsPlainText
            onToggled: checked => pane.appState.insertAsPlainText = checked
        }
        BehaviorRow {
            name: "launchAtLogin"
            text: qsTr("Launch at login")
            checked: pane.appState.launchAtLogin
            onToggled: checked => pane.appState.launchAtLogin = checked
        }
        BehaviorRow {
            name: "requireTextFieldFocus"
            text: qsTr("Require text field focus")
            checked: pane.appState.requireTextFieldFocus
            onToggled: checked => pane.appState.requireTextFieldFocus = checked
            note: qsTr("When enabled, shows a notification if you try to record without focusing a text field.")
        }
        BehaviorRow {
            name: "enableRealtimeStreaming"
            text: qsTr("Realtime streaming (Experimental)")
            checked: pane.appState.enableRealtimeStreaming
            onToggled: checked => pane.appState.enableRealtimeStreaming = checked
            note: qsTr("When enabled, text appears as you speak. When disabled, transcription happens after you stop (more reliable).")
        }
        BehaviorRow {
            name: "enableTextCorrection"
            text: qsTr("Text correction (Experimental)")
            checked: pane.appState.enableTextCorrection
            onToggled: checked => pane.appState.enableTextCorrection = checked
            note: qsTr("Removes filler words (um, uh, like) and cleans up transcribed text.")
        }
    }
}
