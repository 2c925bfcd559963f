import OrvLauncher.Screens
import QtQuick

// What the desktop is told.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search

    spacing: Theme.space28
    Component.onCompleted: model.refreshNotificationStatus()

    SettingGroup {
        search: section.search
        width: parent.width

        SettingSwitch {
            title: qsTr("Notifications")
            text: section.model.notificationStatusText
            on: section.model.notificationsEnabled
            onToggled: on => section.model.setNotificationsEnabled(on)
        }

        SettingRow {
            enabled: section.model.notificationsEnabled
            title: qsTr("Try it")
            text: qsTr("Sends one that only says that it came")

            Button {
                anchors.verticalCenter: parent.verticalCenter
                text: qsTr("Send a test")
                onClicked: section.form.sendTestNotification()
            }
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        enabled: section.model.notificationsEnabled
        heading: qsTr("Tell me when")

        SettingSwitch {
            title: qsTr("A service is ready")
            text: qsTr("With a button that opens it in your browser")
            on: section.form.notifyReady
            onToggled: on => section.form.notifyReady = on
        }

        SettingSwitch {
            title: qsTr("A service stops unexpectedly")
            text: qsTr("With the reason it gave")
            on: section.form.notifyCrash
            onToggled: on => section.form.notifyCrash = on
        }

        SettingSwitch {
            title: qsTr("A project was added")
            text: qsTr("Created or cloned")
            on: section.form.notifyAdded
            onToggled: on => section.form.notifyAdded = on
        }

        SettingSwitch {
            title: qsTr("An AI agent finishes")
            text: qsTr("With its summary")
            on: section.form.notifyAgents
            onToggled: on => section.form.notifyAgents = on
        }
    }

    SettingGroup {
        search: section.search
        width: parent.width
        enabled: section.model.notificationsEnabled
        heading: qsTr("When")

        SettingSwitch {
            title: qsTr("Only while OrvLauncher is in the background")
            text: qsTr("Nothing is said about what you are looking at")
            on: section.form.notifyOnlyInBackground
            onToggled: on => section.form.notifyOnlyInBackground = on
        }
    }
}
