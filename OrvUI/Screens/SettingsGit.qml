import OrvLauncher.Screens
import QtQuick

// How the application uses git.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form

    spacing: Theme.space28

    SettingGroup {
        width: parent.width
        heading: qsTr("Repositories")

        SettingRow {
            title: qsTr("Default branch")
            text: qsTr("Of repositories that are made here")

            Field {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth
                code: true
                placeholderText: qsTr("Default branch")
                text: section.form.defaultBranch
                onEditingFinished: {
                    section.form.defaultBranch = text;
                    text = Qt.binding(() => section.form.defaultBranch);
                }
            }
        }

        SettingRow {
            title: qsTr("Pull")
            text: section.form.pullStrategy === 0 ? qsTr("Only when nothing has to be merged") : section.form.pullStrategy === 1 ? qsTr("Makes a merge commit when both sides have moved") : qsTr("Puts your commits on top of what came")

            Segmented {
                anchors.verticalCenter: parent.verticalCenter
                name: qsTr("Pull")
                currentIndex: section.form.pullStrategy
                choices: [
                    {
                        "text": qsTr("Fast-forward")
                    },
                    {
                        "text": qsTr("Merge")
                    },
                    {
                        "text": qsTr("Rebase")
                    }
                ]
                onChosen: index => section.form.pullStrategy = index
            }
        }
    }
}
