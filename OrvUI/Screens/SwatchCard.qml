import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A look to choose: a small window drawn in it, its name, and a frame and check when chosen.
T.AbstractButton {
    id: card

    property int toldRole: Accessible.RadioButton
    required property int theme
    required property bool dark
    required property int previewWidth
    required property int previewHeight
    // Light at the left, dark at the right.
    property bool halved: false
    readonly property int frame: Theme.haloWidth + Theme.focusWidth

    implicitWidth: previewWidth
    implicitHeight: previewHeight + name.height + Theme.space12
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checked: checked

    background: Item {
        Rectangle {
            x: -card.frame
            y: -card.frame
            width: card.previewWidth + 2 * card.frame
            height: card.previewHeight + 2 * card.frame
            radius: Theme.radiusCard
            color: "transparent"
            border.width: card.checked || (card.activeFocus && InputMode.keyboard) ? Theme.focusWidth : card.hovered ? Theme.hairline : 0
            border.color: card.activeFocus && InputMode.keyboard ? Theme.focus : card.checked ? Theme.accent : Theme.borderStrong
        }
    }

    contentItem: Item {
        MiniWindow {
            width: card.previewWidth
            height: card.previewHeight
            theme: card.theme
            dark: card.dark || card.halved
            cut: card.halved
        }

        Row {
            id: name

            anchors.horizontalCenter: parent.horizontalCenter
            y: card.previewHeight + Theme.space12
            height: Theme.space20
            spacing: Theme.space8

            Label {
                anchors.verticalCenter: parent.verticalCenter
                role: Theme.BodyStrong
                color: card.checked ? Theme.text : Theme.text2
                text: card.text
            }

            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: card.checked
                name: "circle-check"
                size: Theme.iconSmall
                color: Theme.accentText
            }
        }
    }
}
