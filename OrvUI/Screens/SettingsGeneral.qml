import OrvLauncher.Screens
import QtQuick

// The folder of projects, and how the application lives on the desktop.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search
    // Another application holds the quick panel's key.
    property string shortcutNote: (Window.window as Main)?.shortcutNote ?? ""
    // What it gives instead, where the user chooses it there.
    property string shortcutTrigger: (Window.window as Main)?.shortcutTrigger ?? ""
    signal folderRequested

    spacing: Theme.space28
    Component.onCompleted: model.login.refresh()

    SettingGroup {
        search: section.search
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

    Column {
        width: parent.width
        spacing: Theme.space8

        SettingGroup {
            search: section.search
            width: parent.width
            heading: qsTr("Window and menu bar")

            SettingSwitch {
                offered: Qt.platform.os === "osx"
                title: qsTr("Show in Dock")
                text: qsTr("Off: OrvLauncher lives in the menu bar only")
                on: section.form.showDockIcon
                onToggled: on => section.form.showDockIcon = on
            }

            SettingSwitch {
                enabled: section.model.login.available
                title: qsTr("Start at login")
                text: section.model.login.available ? qsTr("Opens in the menu bar when you log in") : qsTr("This system has no list of what starts at login")
                on: section.model.login.enabled
                onToggled: on => section.model.login.enabled = on
            }

            SettingSwitch {
                title: qsTr("Quick panel shortcut")
                text: section.shortcutTrigger.length > 0 ? qsTr("Opens the panel from anywhere, by %1").arg(section.shortcutTrigger) : qsTr("Opens the panel from anywhere")
                keys: section.shortcutTrigger.length > 0 ? [] : Keymap.keysOf("quickPanel")
                on: section.form.quickPanelShortcut
                onToggled: on => section.form.quickPanelShortcut = on
            }
        }

        SettingNote {
            text: section.search.length === 0 ? section.model.login.error : ""
        }

        SettingNote {
            text: section.search.length === 0 ? section.shortcutNote : ""
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        heading: qsTr("Files")

        SettingRow {
            title: qsTr("Editor")
            text: qsTr("{file}, {line} and {column} stand for what is opened. Empty: as the desktop does")

            Field {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth + Theme.space40
                code: true
                placeholderText: "code -g {file}:{line}:{column}"
                text: section.form.editorCommand
                Accessible.name: qsTr("Editor")
                onSettled: section.form.editorCommand = text
            }
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        heading: qsTr("Terminals")

        SettingRow {
            title: qsTr("Programs may copy")
            text: section.form.terminalClipboard === 0 ? qsTr("Nothing that runs in a terminal changes the clipboard") : section.form.terminalClipboard === 1 ? qsTr("You are asked before it changes the clipboard") : qsTr("What runs there, over ssh too, may change the clipboard")

            Segmented {
                anchors.verticalCenter: parent.verticalCenter
                name: qsTr("Programs may copy")
                currentIndex: section.form.terminalClipboard
                choices: [
                    {
                        "text": qsTr("Never")
                    },
                    {
                        "text": qsTr("Ask")
                    },
                    {
                        "text": qsTr("Always")
                    }
                ]
                onChosen: index => section.form.terminalClipboard = index
            }
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        heading: qsTr("Setup")

        SettingRow {
            title: qsTr("Welcome tour")
            text: qsTr("Go through name, folder, git, look and AI again")

            Button {
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Start")
                Accessible.name: qsTr("Start the welcome tour")
                onClicked: section.model.startOnboarding()
            }
        }

        SettingRow {
            title: qsTr("Diagnostics")
            text: qsTr("Versions, desktop and counts, for a report. No names, no paths")

            Button {
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Copy diagnostics")
                onClicked: (Window.window as Main)?.copyDiagnostics()
            }
        }

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
