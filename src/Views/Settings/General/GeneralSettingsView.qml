import QtQuick
import QtQuick.Layouts
import Velloro

/// The general pane: hotkey, language and behaviour.
GroupedForm {
    id: pane

    required property GeneralSettingsViewModel model
    readonly property QtObject appState: model.appState
    /// What a section leaves to its rows.
    readonly property real rowWidth: availableWidth - 2 * (Theme.padding + 10)

    Accessible.role: Accessible.Pane
    Accessible.name: qsTr("General")

    /// A switch of one property of the application state, with a note below it. No layout: one
    /// would keep the height that the text had while there was little room.
    component BehaviorRow: Column {
        id: behavior

        required property string property
        property alias text: control.text
        property string note
        readonly property bool isRevealedWhole: true

        Layout.fillWidth: true
        spacing: 2

        ToggleSwitch {
            id: control
            objectName: behavior.property
            width: behavior.width
            checked: pane.appState[behavior.property]
            onToggled: pane.appState[behavior.property] = checked
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
        SegmentedPicker {
            objectName: "recordingMode"
            Layout.fillWidth: true
            label: qsTr("Recording Mode")
            options: pane.model.recordingModes
            currentIndex: pane.model.recordingModeIndex
            onActivated: index => pane.model.recordingModeIndex = index
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
                entries: pane.model.languages.map(text => ({ text }))
                isAsWideAsEntries: true
                currentIndex: pane.model.languageIndex
                onActivated: index => pane.model.languageIndex = index
            }
        }
    }

    FormSection {
        title: qsTr("Behavior")

        BehaviorRow {
            property: "playSounds"
            text: qsTr("Play sounds")
        }
        BehaviorRow {
            property: "insertAsPlainText"
            text: qsTr("Insert as plain text")
        }
        BehaviorRow {
            property: "launchAtLogin"
            text: qsTr("Launch at login")
        }
        BehaviorRow {
            property: "requireTextFieldFocus"
            text: qsTr("Require text field focus")
            note: qsTr("When enabled, shows a notification if you try to record without focusing a text field.")
        }
        BehaviorRow {
            property: "enableRealtimeStreaming"
            text: qsTr("Realtime streaming (Experimental)")
            note: qsTr("When enabled, text appears as you speak. When disabled, transcription happens after you stop (more reliable).")
        }
        BehaviorRow {
            property: "enableTextCorrection"
            text: qsTr("Text correction (Experimental)")
            note: qsTr("Removes filler words (um, uh, like) and cleans up transcribed text.")
        }
    }
}
