import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A file that a commit changed.
T.AbstractButton {
    id: item

    property int toldRole: Accessible.ListItem
    required property int index
    required property string path
    required property string name
    required property string folder
    required property string letter
    required property string word
    property bool selected: false
    property bool focused: false

    implicitHeight: Theme.gitRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: path
    Accessible.description: word
    Accessible.selected: selected

    background: Rectangle {
        radius: Theme.radiusControl
        color: item.selected ? Theme.selection : item.hovered ? Theme.hover : "transparent"

        FocusRing {
            control: item
            inside: true
            visible: item.focused && InputMode.keyboard
        }
    }

    contentItem: Item {
        Label {
            id: label

            x: Theme.space10
            anchors.verticalCenter: parent.verticalCenter
            width: Math.min(implicitWidth, letter.x - x - Theme.space8)
            text: item.name
        }

        Label {
            anchors.left: label.right
            anchors.leftMargin: Theme.space4
            anchors.right: letter.left
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            role: Theme.Small
            color: Theme.text3
            text: item.folder
        }

        GitLetter {
            id: letter

            anchors.right: parent.right
            anchors.rightMargin: Theme.space8
            anchors.verticalCenter: parent.verticalCenter
            letter: item.letter
        }
    }

    Tip {
        text: label.truncated ? item.path : ""
    }
}
