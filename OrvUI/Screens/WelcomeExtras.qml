import OrvLauncher.Screens
import QtQuick

// What else is done at the end.
WelcomePage {
    id: page

    title: qsTr("Two more things")
    text: qsTr("Both can be changed at any time in Settings.")

    SettingGroup {
        width: parent.width

        SettingSwitch {
            focus: true
            title: qsTr("Notifications")
            text: qsTr("When a service is ready, stops unexpectedly, or an agent finishes")
            on: page.form.notifications
            onToggled: on => page.form.notifications = on
        }

        SettingSwitch {
            visible: page.model.login.available
            title: qsTr("Start at login")
            text: qsTr("Opens in the menu bar when you log in")
            on: page.form.launchAtLogin
            onToggled: on => page.form.launchAtLogin = on
        }
    }
}
