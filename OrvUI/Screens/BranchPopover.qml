import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The branches of a repository: find one and switch to it, make one, or choose what one follows.
Popover {
    id: popover

    required property GitModel git
    signal removalAsked(string branchName)

    function show(creating) {
        choices.text = "";
        choices.creating = creating;
        choices.follower = "";
        list.currentIndex = 0;
        open();
    }

    function chooseUpstream() {
        const item = list.currentItem as BranchItem;
        if (item !== null && item.followable) {
            const name = item.name;
            choices.text = "";
            choices.follower = name;
            list.currentIndex = 0;
        }
    }

    function take() {
        if (!choices.creating && list.count > 0 ? choices.choose(list.currentIndex) : choices.create()) {
            popover.close();
        }
    }

    function ask() {
        const item = list.currentItem as BranchItem;
        if (item !== null && item.removable) {
            popover.close();
            popover.removalAsked(item.name);
        }
    }

    readonly property bool following: choices.follower.length > 0

    padding: Theme.space6
    onOpened: field.forceActiveFocus(Qt.PopupFocusReason)

    BranchChoices {
        id: choices

        git: popover.git
    }

    contentItem: FocusScope {
        implicitHeight: column.implicitHeight
        Accessible.role: Accessible.Dialog
        Accessible.name: qsTr("Branches")

        Column {
            id: column

            width: parent.width

            Item {
                width: parent.width
                height: field.height + Theme.space10

                Field {
                    id: field

                    x: Theme.haloWidth
                    y: Theme.haloWidth
                    width: parent.width - 2 * x
                    focus: true
                    glyph: choices.creating ? "git-branch-plus" : popover.following ? "globe" : "search"
                    wrong: choices.problem.length > 0
                    placeholderText: choices.creating ? qsTr("Name of the new branch") : popover.following ? qsTr("Find what %1 follows").arg(choices.follower) : qsTr("Find or create a branch")
                    text: choices.text
                    onTextEdited: {
                        choices.text = text;
                        list.currentIndex = 0;
                    }
                    onAccepted: popover.take()
                    Keys.onDownPressed: list.incrementCurrentIndex()
                    Keys.onUpPressed: list.decrementCurrentIndex()
                    Keys.onEscapePressed: popover.following ? popover.show(false) : popover.close()
                    Keys.onPressed: event => {
                        const atEnd = field.cursorPosition === field.length;
                        if (event.key === Qt.Key_Delete && atEnd) {
                            event.accepted = true;
                            popover.ask();
                        } else if (event.key === Qt.Key_Right && atEnd && event.modifiers === Qt.NoModifier) {
                            event.accepted = true;
                            popover.chooseUpstream();
                        }
                    }
                }
            }

            ListView {
                id: list

                width: parent.width
                height: Math.min(contentHeight, 8 * Theme.menuRowHeight)
                visible: count > 0
                clip: true
                boundsBehavior: Flickable.StopAtBounds
                highlightMoveDuration: 0
                model: choices.rows
                Accessible.role: Accessible.List
                Accessible.name: qsTr("Branches")

                delegate: BranchItem {
                    width: list.width
                    highlighted: ListView.isCurrentItem
                    following: popover.following
                    onUpstreamAsked: {
                        list.currentIndex = index;
                        popover.chooseUpstream();
                        field.forceActiveFocus(Qt.OtherFocusReason);
                    }
                    onClicked: {
                        list.currentIndex = index;
                        popover.take();
                    }
                    onRemoved: {
                        list.currentIndex = index;
                        popover.ask();
                    }
                }

                T.ScrollBar.vertical: ScrollBar {}
            }

            Label {
                x: Theme.space10
                width: parent.width - 2 * x
                height: visible ? Theme.menuRowHeight : 0
                verticalAlignment: Text.AlignVCenter
                visible: text.length > 0
                role: Theme.Small
                color: choices.problem.length > 0 ? Theme.danger : Theme.text3
                text: choices.problem.length > 0 ? choices.problem : popover.following ? (list.count === 0 ? qsTr("No remote has a branch of this name.") : "") : choices.creating && popover.git.branch.length > 0 ? qsTr("It begins where %1 is.").arg(popover.git.branch) : list.count === 0 && choices.newName.length === 0 ? qsTr("There are no branches yet.") : ""
            }

            Item {
                width: parent.width
                height: Theme.space12 + Theme.hairline

                Rectangle {
                    y: Theme.space6
                    width: parent.width
                    height: Theme.hairline
                    color: Theme.border
                }
            }

            T.AbstractButton {
                id: create

                width: parent.width
                implicitHeight: Theme.menuRowHeight
                focusPolicy: Qt.TabFocus
                hoverEnabled: true
                enabled: popover.following ? choices.follows : !choices.creating || choices.newName.length > 0
                text: popover.following ? qsTr("Follow none") : choices.newName.length > 0 ? qsTr("Create “%1”").arg(choices.newName) : qsTr("New branch…")
                Accessible.role: Accessible.Button
                Accessible.name: text
                Keys.onReturnPressed: create.clicked()
                onClicked: {
                    if (popover.following) {
                        choices.unfollow();
                        popover.close();
                    } else if (choices.newName.length > 0) {
                        choices.create();
                        popover.close();
                    } else {
                        choices.creating = true;
                        field.forceActiveFocus(Qt.OtherFocusReason);
                    }
                }

                background: Rectangle {
                    radius: Theme.radiusRow
                    color: create.hovered || create.activeFocus ? Theme.selection : "transparent"
                }

                contentItem: Item {
                    Icon {
                        x: Theme.space8
                        anchors.verticalCenter: parent.verticalCenter
                        name: popover.following ? "x" : "git-branch-plus"
                        size: Theme.icon
                        color: create.enabled ? Theme.text2 : Theme.disabled
                    }

                    Label {
                        anchors.left: parent.left
                        anchors.leftMargin: Theme.space32 + Theme.space2
                        anchors.right: hint.left
                        anchors.rightMargin: Theme.space8
                        anchors.verticalCenter: parent.verticalCenter
                        color: create.enabled ? Theme.text : Theme.disabled
                        text: create.text
                    }

                    KeyHint {
                        id: hint

                        anchors.right: parent.right
                        anchors.rightMargin: Theme.space8
                        anchors.verticalCenter: parent.verticalCenter
                        visible: text.length > 0
                        text: popover.following ? "" : choices.newName.length > 0 && (choices.creating || list.count === 0) ? qsTr("Enter") : Keymap.text("newBranch")
                    }
                }
            }
        }
    }
}
