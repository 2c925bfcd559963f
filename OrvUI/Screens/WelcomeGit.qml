import OrvLauncher.Screens
import QtQuick

// Who commits are by.
WelcomePage {
    id: page

    title: qsTr("Tell git who you are")
    text: qsTr("Your commits carry this name and e-mail. Leave both empty to keep git as it is.")

    FormField {
        width: parent.width
        label: qsTr("Name")

        Field {
            width: parent.width
            implicitHeight: Theme.fieldLarge
            corner: Theme.radiusLarge
            focus: true
            placeholderText: qsTr("Name for commits")
            text: page.form.gitName
            onTextEdited: page.form.gitName = text
        }
    }

    FormField {
        width: parent.width
        label: qsTr("E-mail")

        Field {
            width: parent.width
            implicitHeight: Theme.fieldLarge
            corner: Theme.radiusLarge
            placeholderText: qsTr("E-mail for commits")
            inputMethodHints: Qt.ImhEmailCharactersOnly
            text: page.form.gitEmail
            onTextEdited: page.form.gitEmail = text
        }
    }
}
