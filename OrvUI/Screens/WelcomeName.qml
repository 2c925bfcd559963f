import OrvLauncher.Screens
import QtQuick

// How the user is called.
WelcomePage {
    id: page

    title: qsTr("What should we call you?")
    text: qsTr("Your name is in the greeting on the home page and stays on this computer.")

    FormField {
        width: parent.width
        label: qsTr("Your name")

        Field {
            width: parent.width
            implicitHeight: Theme.fieldLarge
            corner: Theme.radiusLarge
            focus: true
            placeholderText: qsTr("Name")
            text: page.form.name
            onTextEdited: page.form.name = text
        }
    }
}
