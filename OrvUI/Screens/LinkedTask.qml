import OrvLauncher.Screens
import QtQuick

// The to-do item that is done with what is written here, and a button for when it is not.
Rectangle {
    id: chip

    required property string title
    signal removed

    implicitWidth: icon.width + name.implicitWidth + remove.width + Theme.space8 + Theme.space4 + 2 * Theme.space2
    implicitHeight: Theme.controlMini
    radius: height / 2
    color: Theme.selection

    Icon {
        id: icon

        anchors.verticalCenter: parent.verticalCenter
        x: Theme.space8
        name: "list-todo"
        size: Theme.iconMini
        color: Theme.accentText
    }

    Label {
        id: name

        anchors.left: icon.right
        anchors.leftMargin: Theme.space4
        anchors.right: remove.left
        anchors.verticalCenter: parent.verticalCenter
        role: Theme.SmallStrong
        color: Theme.accentText
        text: qsTr("Task: %1").arg(chip.title)
    }

    IconButton {
        id: remove

        anchors.right: parent.right
        anchors.rightMargin: Theme.space2
        anchors.verticalCenter: parent.verticalCenter
        edge: Theme.space20
        glyphSize: Theme.iconMini
        tint: Theme.accentText
        glyph: "x"
        text: qsTr("Unlink the task")
        Keys.onDeletePressed: remove.clicked()
        Accessible.description: chip.title
        onClicked: chip.removed()
    }
}
