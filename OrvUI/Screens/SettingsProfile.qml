import OrvLauncher.Screens
import QtQuick

// Who uses the application: the name of the greeting and the picture at the sidebar's foot.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search

    spacing: Theme.space28

    SettingGroup {
        search: section.search
        width: parent.width

        SettingRow {
            title: qsTr("Name")
            text: qsTr("The home page greets you by it")

            Field {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth
                placeholderText: qsTr("Name")
                text: section.form.displayName
                onSettled: {
                    section.form.displayName = text;
                    text = Qt.binding(() => section.form.displayName);
                }
            }
        }

        SettingRow {
            title: qsTr("Colour")
            text: qsTr("Behind your initial in the sidebar")

            Row {
                anchors.verticalCenter: parent.verticalCenter
                spacing: Theme.space8

                Repeater {
                    model: ["", ...Theme.avatars]

                    ColorDot {
                        required property string modelData

                        text: modelData.length > 0 ? modelData : qsTr("Accent of the theme")
                        fill: modelData.length > 0 ? modelData : Theme.accent
                        checked: section.form.avatarColor === modelData
                        onClicked: section.form.avatarColor = modelData
                    }
                }
            }
        }
    }
}
