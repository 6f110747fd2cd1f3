#include "Scene.h"

#include "Base/StringLiterals.h"

namespace Velloro {

namespace {

const QByteArray gallery = R"qml(
import QtQuick
import QtQuick.Layouts
import Velloro

Rectangle {
    width: 500
    height: 640
    color: Theme.window

    GroupedForm {
        anchors.fill: parent
        FormSection {
            title: "Section"
            ToggleSwitch { Layout.fillWidth: true; text: "A switch that is on"; checked: true }
            ToggleSwitch { Layout.fillWidth: true; text: "A switch that is off" }
            Note { Layout.fillWidth: true; text: "A note that explains the switch above it, in so many words that it does not fit into one line." }
            SegmentedPicker { Layout.fillWidth: true; label: "Recording Mode"; options: ["Hold to Talk", "Toggle"] }
            RowLayout {
                ThemedText { text: "Transcription Language"; Layout.fillWidth: true }
                PopUpButton { label: "Language"; entries: ["English (Best accuracy)", "Polski"]; currentIndex: 0 }
            }
        }
        FormSection {
            title: "Buttons"
            RowLayout {
                CapsuleButton { text: "Download"; kind: CapsuleButton.Prominent }
                CapsuleButton { text: "Select" }
                CapsuleButton { text: "Retry"; tint: Theme.red }
                CapsuleButton { text: "Quit"; kind: CapsuleButton.Borderless }
                CapsuleButton { text: "Add"; kind: CapsuleButton.Prominent; enabled: false }
            }
            RowLayout {
                CapsuleButton { text: "Enable"; kind: CapsuleButton.Prominent; size: CapsuleButton.Small }
                CapsuleButton { text: "OpenAI"; size: CapsuleButton.Small }
                CapsuleButton { text: "Clear All"; kind: CapsuleButton.Borderless; tint: Theme.red; size: CapsuleButton.Small }
                CapsuleButton { text: "Download Now"; symbol: "arrow.down.circle"; kind: CapsuleButton.Prominent; size: CapsuleButton.Large }
                IconButton { text: "Delete"; symbol: "trash"; color: Theme.red }
            }
            RowLayout {
                CapsuleButton {
                    readonly property bool isInActiveWindow: Window.active
                    text: "Focused"
                    onIsInActiveWindowChanged: if (isInActiveWindow) forceActiveFocus(Qt.TabFocusReason)
                }
                TextEntry { placeholderText: "Type a word"; Layout.fillWidth: true }
            }
        }
        FormSection {
            RowLayout {
                StarRating { label: "Accuracy"; stars: 4 }
                StarRating { label: "Speed"; stars: 2; color: Theme.green }
                ProgressBar { value: 0.42 }
                Spinner {}
                Badge { text: "Recommended" }
                Badge { text: "Required"; tint: Theme.red }
            }
            Divider { Layout.fillWidth: true }
            DisclosureGroup { Layout.fillWidth: true; title: "Tiny"; detail: "5 models" }
            DisclosureGroup {
                Layout.fillWidth: true; title: "Base"; detail: "5 models"; isOpen: true
                content: Component { Note { text: "What is in it" } }
            }
            RowLayout {
                spacing: 16
                Symbol { name: "waveform.circle.fill"; size: 64; color: Theme.blue; gradientColor: Theme.purple }
                Symbol { name: "text.quote"; size: 50; color: Theme.orange; gradientColor: Theme.pink }
                Symbol { name: "checkmark.circle.fill"; size: 50; color: Theme.green; hierarchical: true }
            }
        }
    }
}
)qml";

const QByteArray fonts = R"qml(
import QtQuick
import Velloro

Rectangle {
    width: 360
    height: 380
    color: Theme.window
    Column {
        x: 16; y: 16
        spacing: 8
        ThemedText { text: "Large title"; font: Theme.largeTitle }
        ThemedText { text: "Title"; font: Theme.title }
        ThemedText { text: "Title 2"; font: Theme.title2 }
        ThemedText { text: "Title 3"; font: Theme.title3 }
        ThemedText { text: "Headline"; font: Theme.headline }
        ThemedText { text: "Body" }
        ThemedText { text: "Subheadline"; font: Theme.subheadline }
        ThemedText { text: "Caption"; font: Theme.caption }
        ThemedText { text: "Caption 2"; font: Theme.caption2 }
        ThemedText { text: "Secondary"; color: Theme.secondary }
        ThemedText { text: "Tertiary"; color: Theme.tertiary }
        Row {
            spacing: 4
            Repeater {
                model: ["red", "orange", "yellow", "green", "blue", "purple", "pink", "gray", "accent"]
                Rectangle { required property string modelData; width: 30; height: 30; radius: 6; color: Theme[modelData] }
            }
        }
    }
}
)qml";

} // namespace

QList<Scene> controlScenes()
{
    return {{u"controls-gallery"_s, [](Stage &stage) { return stage.pictureOfText(gallery); }},
            {u"controls-fonts"_s, [](Stage &stage) { return stage.pictureOfText(fonts); }}};
}

} // namespace Velloro
