import OrvLauncher.Screens
import QtQuick

// An open to-do item in the quick panel.
Item {
    id: row

    required property int index
    required property string key
    required property string title
    required property string projectName
    signal finished

    height: visible ? Theme.space32 + Theme.space4 : 0
    Accessible.role: Accessible.ListItem
    Accessible.name: title
    Accessible.description: projectName

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.space8
        anchors.rightMargin: Theme.space8
        radius: Theme.radiusControl
        color: hover.hovered ? Theme.hover : "transparent"
    }

    HoverHandler {
        id: hover
    }

    TaskRound {
        id: round

        x: Theme.space20
        anchors.verticalCenter: parent.verticalCenter
        text: row.title
        onClicked: {
            checked = false;
            row.finished();
        }
    }

    Label {
        id: words

        anchors.left: round.right
        anchors.leftMargin: Theme.space12
        anchors.right: project.left
        anchors.rightMargin: Theme.space8
        anchors.verticalCenter: parent.verticalCenter
        text: row.title

        Tip {
            text: words.truncated ? words.text : ""
        }
    }

    Label {
        id: project

        anchors.right: parent.right
        anchors.rightMargin: Theme.space20
        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, row.width / 3)
        role: Theme.Small
        color: Theme.text3
        text: row.projectName
    }
}
