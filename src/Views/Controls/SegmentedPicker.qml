pragma ComponentBehavior: Bound
import QtQuick
import QtQuick.Layouts
import QtQuick.Templates as T
import Velloro

/// A few choices beside each other of which one holds. Left and right move between them.
FocusScope {
    id: picker

    /// What is chosen, shown before the segments where it is not empty.
    property string label
    property bool showsLabel: true
    /// The room that the segments take.
    readonly property alias segmentsWidth: ground.implicitWidth
    property list<string> options
    property int currentIndex: 0
    /// The user chose another segment.
    signal activated(int index)

    implicitWidth: row.implicitWidth
    implicitHeight: row.implicitHeight
    Accessible.role: Accessible.PageTabList
    Accessible.name: label

    RowLayout {
        id: row
        anchors.fill: parent
        spacing: 12

        ThemedText {
            Layout.fillWidth: true
            visible: picker.showsLabel && picker.label !== ""
            text: picker.label
        }
        RoundedRectangle {
            id: ground
            implicitWidth: segments.implicitWidth + 4
            implicitHeight: segments.implicitHeight + 4
            radius: 7
            color: Theme.faded(Theme.primary, 0.08)

            Row {
                id: segments
                x: 2
                y: 2

                Repeater {
                    id: repeater
                    model: picker.options

                    // A button of this kind, since its kind is the role that the toolkit tells.
                    T.RadioButton {
                        id: segment

                        required property int index
                        required property string modelData

                        text: modelData
                        checked: index === picker.currentIndex
                        focus: checked
                        // One stop for the Tab key; the arrows do the rest.
                        focusPolicy: checked ? Qt.StrongFocus : Qt.ClickFocus
                        leftPadding: 12
                        rightPadding: 12
                        topPadding: 4
                        bottomPadding: 4
                        implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
                        implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding

                        Accessible.role: Accessible.RadioButton
                        Accessible.name: text
                        Accessible.checkable: true
                        Accessible.checked: checked
                        Accessible.onPressAction: clicked()
                        Accessible.onToggleAction: clicked()

                        function choose(index) {
                            if (index < 0 || index >= repeater.count || index === picker.currentIndex)
                                return
                            picker.activated(index)
                            repeater.itemAt(index).forceActiveFocus(Qt.TabFocusReason)
                        }

                        onClicked: if (index !== picker.currentIndex) picker.activated(index)
                        Keys.onLeftPressed: choose(index - 1)
                        Keys.onRightPressed: choose(index + 1)

                        contentItem: Text {
                            text: segment.text
                            font: segment.checked ? Theme.bodyMedium : Theme.body
                            color: Theme.primary
                            horizontalAlignment: Text.AlignHCenter
                            textFormat: Text.PlainText
                        }
                        background: RoundedRectangle {
                            radius: 5
                            color: segment.checked ? Theme.control : "transparent"
                            borderWidth: segment.checked ? 1 : 0
                            borderColor: Theme.controlBorder
                            FocusRing { control: segment; gap: 0; radius: parent.radius }
                        }
                    }
                }
            }
        }
    }
}
