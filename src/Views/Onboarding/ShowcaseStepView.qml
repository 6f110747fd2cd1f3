import QtQuick
import QtQuick.Layouts
import Velloro

/// The fifth step: what the recogniser can be trusted with.
StepPage {
    id: page

    component Example: RoundedRectangle {
        property alias title: title.text
        property alias sentence: sentence.text

        Layout.fillWidth: true
        implicitHeight: texts.implicitHeight + 24
        radius: 8
        color: Theme.faded(Theme.secondary, 0.1)

        ColumnLayout {
            id: texts
            anchors.fill: parent
            anchors.margins: 12
            spacing: 4
            ThemedText {
                id: title
                font: Theme.weighted(Theme.caption, Font.DemiBold)
                color: Theme.secondary
            }
            ThemedText {
                id: sentence
                Layout.fillWidth: true
                wrapMode: Text.WordWrap
            }
        }
    }

    spacing: 20
    verticalPadding: 0
    Accessible.name: qsTr("Handles Complex Phrases")

    Symbol {
        Layout.alignment: Qt.AlignHCenter
        name: "text.quote"
        size: Math.round(60 * Theme.growth)
        color: Theme.orange
        gradientColor: Theme.pink
    }
    StepText {
        text: qsTr("Handles Complex Phrases")
        font: Theme.weighted(Theme.title2, Font.Bold)
        Accessible.role: Accessible.Heading
    }
    StepText {
        text: qsTr("Velloro excels at phrases that trip up other tools")
        font: Theme.subheadline
        color: Theme.secondary
    }
    ColumnLayout {
        Layout.fillWidth: true
        Layout.leftMargin: 30 - Theme.padding
        Layout.rightMargin: 30 - Theme.padding
        spacing: 12

        Example {
            title: qsTr("Technical & Medical")
            sentence: qsTr("Configure the Kubernetes ingress controller with acute myocardial infarction")
        }
        Example {
            title: qsTr("Foreign Names & Numbers")
            sentence: qsTr("Contact Jérôme Küpfer at $1,234.56 before March 15th, 2024")
        }
        RowLayout {
            Layout.alignment: Qt.AlignHCenter
            Layout.fillWidth: false
            Layout.maximumWidth: parent.width
            Layout.topMargin: 4
            spacing: 8
            Symbol {
                name: "sparkles"
                size: Math.round(16 * Theme.textScale)
                color: Theme.orange
            }
            Note {
                Layout.fillWidth: true
                text: qsTr("...and way more: code dictation, special characters, accents, and beyond")
            }
        }
    }
}
