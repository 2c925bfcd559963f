import OrvLauncher.Screens
import QtQuick

// Puts the changes aside, under a name.
Popover {
    id: popover

    required property GitModel git

    function save() {
        popover.git.stashSave(message.text, untracked.checked);
        popover.close();
    }

    width: Theme.popoverWidth
    padding: Theme.space12
    onOpened: {
        message.text = "";
        message.forceActiveFocus(Qt.PopupFocusReason);
    }

    contentItem: Column {
        spacing: Theme.space10
        // What has the focus takes it first, where it is a button.
        Keys.onReturnPressed: popover.save()
        Keys.onEnterPressed: popover.save()

        Label {
            role: Theme.Section
            text: qsTr("Put the changes aside")
        }

        Field {
            id: message

            width: parent.width
            placeholderText: qsTr("A name for it, if you like")
            Keys.onEscapePressed: popover.close()
        }

        CheckBox {
            id: untracked

            checked: true
            text: qsTr("Files that are new, too")
        }

        Button {
            anchors.right: parent.right
            text: qsTr("Stash")
            onClicked: popover.save()
        }
    }
}
