import OrvLauncher.Screens
import QtQuick

// The first of a project's open to-do items.
OverviewCard {
    id: card

    required property AppModel model
    required property string projectID
    readonly property TaskLists lists: model.projectTasks
    readonly property int limit: 4
    signal tasksAsked

    heading: qsTr("Tasks")
    note: lists.openCount > 0 ? qsTr("%1 open").arg(lists.openCount) : ""

    Binding {
        target: card.lists
        property: "projectID"
        value: card.projectID
    }

    corner: IconButton {
        anchors.verticalCenter: parent?.verticalCenter
        glyph: "plus"
        text: qsTr("Add a task")
        onClicked: card.tasksAsked()
    }

    Repeater {
        id: list

        model: card.lists.open

        Item {
            id: item

            required property int index
            required property string key
            required property string title
            required property string agentName

            visible: index < card.limit
            width: parent?.width ?? 0
            height: Theme.space28 + Theme.space2
            Accessible.role: Accessible.ListItem
            Accessible.name: title

            TaskRound {
                id: round

                x: -inset
                ring: Theme.taskRoundSmall
                anchors.verticalCenter: parent.verticalCenter
                text: item.title
                onClicked: {
                    checked = false;
                    card.lists.setDone(item.key, true);
                }
            }

            Label {
                id: words

                anchors.left: round.right
                anchors.leftMargin: Theme.space10 - round.inset
                anchors.right: pill.visible ? pill.left : parent.right
                anchors.rightMargin: pill.visible ? Theme.space8 : 0
                anchors.verticalCenter: parent.verticalCenter
                text: item.title

                Tip {
                    text: words.truncated ? words.text : ""
                }
            }

            Pill {
                id: pill

                anchors.right: parent.right
                anchors.verticalCenter: parent.verticalCenter
                visible: item.agentName.length > 0
                busy: true
                tint: Theme.accentText
                fill: Theme.accentSoft
                text: qsTr("AI")
            }
        }
    }

    Label {
        visible: list.count > card.limit
        height: Theme.space24
        leftPadding: Theme.taskRoundSmall + Theme.space10
        verticalAlignment: Text.AlignVCenter
        role: Theme.Small
        color: Theme.text3
        text: qsTr("%1 more").arg(list.count - card.limit)
    }

    Label {
        visible: list.count === 0
        height: Theme.space24
        verticalAlignment: Text.AlignVCenter
        role: Theme.Small
        color: Theme.text3
        text: qsTr("Nothing to do")
    }
}
