import OrvLauncher.Screens
import QtQuick

// Which agent takes a task, and how much it may do.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form

    spacing: Theme.space28

    SettingGroup {
        width: parent.width
        heading: qsTr("Custom agent")

        SettingRow {
            title: qsTr("Command")
            text: qsTr("The task is in $ORV_TASK")

            Field {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth + Theme.space40
                code: true
                placeholderText: "mytool --ask \"$ORV_TASK\""
                text: section.form.customAgentCommand
                onEditingFinished: section.form.customAgentCommand = text
            }
        }
    }
}
