import OrvLauncher.Screens
import QtQuick

// The folder of projects, and how the application lives on the desktop.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    signal folderRequested

    spacing: Theme.space28

    SettingGroup {
        width: parent.width
        heading: qsTr("Projects folder")

        SettingRow {
            code: true
            title: section.model.scanRootText
            text: !section.model.hasScanned ? qsTr("Looking for projects…") : section.model.projectCount === 1 ? qsTr("1 project found") : qsTr("%1 projects found").arg(section.model.projectCount)

            Button {
                anchors.verticalCenter: parent.verticalCenter
                ghost: true
                text: qsTr("Show in file manager")
                onClicked: section.model.openLink(section.model.scanRootUrl)
            }

            Button {
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Choose…")
                onClicked: section.folderRequested()
            }
        }
    }

    SettingGroup {
        width: parent.width
        heading: qsTr("Setup")

        SettingRow {
            title: qsTr("Application data")
            text: qsTr("Settings, overrides and tasks")

            Button {
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Show in file manager")
                onClicked: section.model.openLink(section.model.supportUrl)
            }
        }
    }
}
