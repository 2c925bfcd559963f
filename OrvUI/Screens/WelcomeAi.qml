import OrvLauncher.Screens
import QtQuick

// Which agent takes tasks, and how much it may do.
WelcomePage {
    id: page

    readonly property AgentModels agents: model.agentModels

    title: qsTr("Hand tasks to an agent")
    text: qsTr("Choose who takes a task and how much they may do. Nothing starts by itself.")
    Component.onCompleted: agents.refreshAgents()

    SettingGroup {
        width: parent.width
        heading: qsTr("Default agent")

        Repeater {
            model: page.agents.agents

            SettingRow {
                id: row

                required property int index
                required property string name
                required property string letters
                required property string status
                required property string notice

                width: page.width
                focus: page.form.defaultAgent === row.index
                title: row.name
                text: row.notice.length > 0 ? qsTr("%1. %2").arg(row.status).arg(row.notice) : row.status
                rowHeight: Theme.serviceItemHeight

                TapHandler {
                    onTapped: page.form.defaultAgent = row.index
                }

                Radio {
                    focus: true
                    anchors.verticalCenter: parent.verticalCenter
                    text: row.name
                    checked: page.form.defaultAgent === row.index
                    onClicked: page.form.defaultAgent = row.index
                }
            }
        }
    }

    Column {
        width: parent.width
        visible: page.agents.hasAutonomy(page.form.defaultAgent)
        spacing: Theme.space8

        Label {
            role: Theme.Section
            text: qsTr("How much it may do")
        }

        Segmented {
            width: parent.width
            implicitHeight: Theme.buttonDialog
            stretched: true
            name: qsTr("How much it may do")
            currentIndex: page.form.autonomy
            choices: [
                {
                    "text": qsTr("Plan only"),
                    "glyph": "eye"
                },
                {
                    "text": qsTr("Edit files"),
                    "glyph": "file-pen-line"
                },
                {
                    "text": qsTr("Full auto"),
                    "glyph": "zap"
                }
            ]
            onChosen: index => page.form.autonomy = index
        }
    }
}
