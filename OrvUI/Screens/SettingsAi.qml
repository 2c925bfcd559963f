import OrvLauncher.Screens
import QtQuick

// Which agent takes a task, and how much it may do.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search
    readonly property AgentModels agents: model.agentModels

    spacing: Theme.space28
    Component.onCompleted: agents.refreshAgents()

    SettingGroup {
        id: agentsGroup

        search: section.search
        width: parent.width
        heading: qsTr("Default agent")

        Repeater {
            model: section.agents.agents

            Item {
                id: row

                required property int index
                required property string key
                required property string name
                required property string letters
                required property string status
                required property string notice
                required property string installHint
                required property string action
                required property bool isInstalled
                required property bool isDefault

                width: section.width
                height: words.height
                visible: agentsGroup.finds(name)

                SettingHit {
                    name: row.name
                }

                Radio {
                    x: Theme.space12
                    y: Theme.space12 + Theme.space2
                    text: row.name
                    checked: row.isDefault
                    onClicked: section.agents.defaultAgent = row.index
                }

                AgentListItem {
                    id: words

                    x: Theme.space32
                    width: parent.width - x
                    agents: section.agents
                    index: row.index
                    name: row.name
                    letters: row.letters
                    status: row.status
                    notice: row.notice
                    installHint: row.installHint
                    action: row.action
                    isInstalled: row.isInstalled
                    isDefault: false
                    wide: true
                    onSetUpAsked: command.forceActiveFocus(Qt.OtherFocusReason)
                }
            }
        }

        SettingRow {
            title: qsTr("Command of the custom agent")
            text: qsTr("The task is in $ORV_TASK")

            Field {
                id: command

                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth + Theme.space40
                code: true
                placeholderText: "mytool --ask \"$ORV_TASK\""
                text: section.agents.customCommand
                onSettled: section.agents.customCommand = text
            }
        }
    }

    SettingBlock {
        width: parent.width
        search: section.search
        heading: qsTr("Autonomy")
        visible: finds("")

        Row {
            id: cards

            readonly property int third: Math.floor((width - 2 * spacing) / 3)

            width: parent.width
            spacing: Theme.space12
            Accessible.role: Accessible.Grouping
            Accessible.name: qsTr("Autonomy")

            Repeater {
                model: section.agents.autonomies

                AutonomyCard {
                    // The last one ends where the list above does.
                    width: index < 2 ? cards.third : cards.width - 2 * (cards.third + cards.spacing)
                    onClicked: section.agents.autonomy = index
                }
            }
        }

        Label {
            width: parent.width
            visible: section.agents.customCommand.length > 0
            role: Theme.Small
            color: Theme.text3
            wrapMode: Text.Wrap
            text: qsTr("A custom agent is held by its own command line alone.")
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        heading: qsTr("Work trees")

        SettingSwitch {
            title: qsTr("Give each run a git work tree of its own")
            text: qsTr("Its changes stay apart until you merge them")
            on: section.agents.usesWorktrees
            onToggled: on => section.agents.usesWorktrees = on
        }
    }
}
