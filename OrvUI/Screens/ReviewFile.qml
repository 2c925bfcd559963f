import OrvLauncher.Screens
import QtQuick

// A file that a run has changed: how, and by how many lines.
Item {
    id: file

    required property int index
    required property string key
    required property string kind
    required property int added
    required property int removed
    required property bool isBinary
    property bool current: false
    property bool focused: false
    signal chosen

    height: Theme.controlRegular
    Accessible.role: Accessible.ListItem
    Accessible.selected: current
    Accessible.name: qsTr("%1, %2, %3 added, %4 removed").arg(key).arg(kind).arg(added).arg(removed)

    Rectangle {
        anchors.fill: parent
        anchors.leftMargin: Theme.space4
        anchors.rightMargin: Theme.space4
        radius: Theme.radiusControl
        color: file.current ? Theme.selection : hover.hovered ? Theme.hover : "transparent"
        border.width: file.focused && InputMode.keyboard ? Theme.focusWidth : 0
        border.color: Theme.focus
    }

    HoverHandler {
        id: hover
    }

    TapHandler {
        onTapped: file.chosen()
    }

    Icon {
        id: sign

        x: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        name: file.kind === "added" ? "file-plus-2" : file.kind === "deleted" ? "trash-2" : "file-pen-line"
        color: Theme.text2
    }

    Label {
        id: path

        anchors.left: sign.right
        anchors.leftMargin: Theme.space8
        anchors.right: counts.left
        anchors.rightMargin: Theme.space8
        anchors.verticalCenter: parent.verticalCenter
        role: Theme.MonoPath
        elide: Text.ElideMiddle
        text: file.key

        Tip {
            text: path.truncated ? path.text : ""
        }
    }

    Row {
        id: counts

        anchors.right: parent.right
        anchors.rightMargin: Theme.space12
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space8

        Label {
            visible: file.isBinary
            role: Theme.Small
            color: Theme.text3
            text: qsTr("binary")
        }

        Figures {
            visible: !file.isBinary
            role: Theme.MonoPath
            color: Theme.success
            text: qsTr("+%1").arg(file.added)
        }

        Figures {
            visible: !file.isBinary
            role: Theme.MonoPath
            color: Theme.danger
            text: qsTr("−%1").arg(file.removed)
        }
    }
}
