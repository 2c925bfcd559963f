import OrvLauncher.Screens
import QtQuick

// How the application uses git.
Column {
    id: section

    required property AppModel model
    required property SettingsForm form
    // What is looked for among the settings; empty: everything is shown.
    property string search

    spacing: Theme.space28

    GitIdentityForm {
        id: identity

        model: section.model
    }

    SettingGroup {
        search: section.search
        width: parent.width
        heading: qsTr("Identity")

        SettingRow {
            title: qsTr("Name")
            text: qsTr("Your commits carry it, in every repository that has none of its own")

            Field {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth
                enabled: identity.isRead
                placeholderText: qsTr("Your name")
                text: identity.name
                onSettled: {
                    identity.name = text;
                    text = Qt.binding(() => identity.name);
                }
            }
        }

        SettingRow {
            title: qsTr("E-mail")
            text: qsTr("By which a host knows whose commits they are")

            Field {
                anchors.verticalCenter: parent.verticalCenter
                width: Theme.searchWidth
                enabled: identity.isRead
                placeholderText: "you@example.com"
                text: identity.email
                onSettled: {
                    identity.email = text;
                    text = Qt.binding(() => identity.email);
                }
            }
        }
    }

    SettingGroup {
        search: section.search
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
                onSettled: {
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
