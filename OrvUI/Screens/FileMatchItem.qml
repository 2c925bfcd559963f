import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A file that was found, with the letters that were meant.
T.AbstractButton {
    id: item

    property int toldRole: Accessible.ListItem
    required property int index
    required property string path
    required property var letters
    required property string letter
    property bool highlighted: false
    readonly property int slash: path.lastIndexOf("/")

    implicitHeight: Theme.taskRowHeight
    focusPolicy: Qt.NoFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: path
    Accessible.selected: highlighted

    background: Rectangle {
        radius: Theme.radiusControl
        color: item.highlighted ? Theme.selection : item.hovered ? Theme.hover : "transparent"
    }

    contentItem: Item {
        Column {
            x: Theme.space10
            width: parent.width - x - mark.width - Theme.space12
            anchors.verticalCenter: parent.verticalCenter

            Label {
                width: parent.width
                textFormat: Text.StyledText
                text: CodeText.matched(item.path.slice(item.slash + 1), item.letters.filter(at => at > item.slash).map(at => at - item.slash - 1), Theme.isDark, Theme.theme)
            }

            Label {
                width: parent.width
                visible: item.slash > 0
                role: Theme.Small
                color: Theme.text3
                elide: Text.ElideMiddle
                textFormat: Text.PlainText
                text: item.path.slice(0, Math.max(0, item.slash))
            }
        }

        GitLetter {
            id: mark

            anchors.right: parent.right
            anchors.rightMargin: Theme.hairline
            anchors.verticalCenter: parent.verticalCenter
            visible: item.letter.length > 0
            plain: true
            letter: item.letter
        }
    }

    Tip {
        text: item.path
    }
}
