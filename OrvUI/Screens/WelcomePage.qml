import OrvLauncher.Screens
import QtQuick

// One page of the first start: a title, a sentence, and what it asks.
FocusScope {
    id: page

    required property AppModel model
    required property OnboardingModel form
    property string title
    property string text
    property alias spacing: parts.spacing
    default property alias parts: parts.data

    implicitHeight: column.height

    Column {
        id: column

        width: parent.width

        Label {
            width: parent.width
            role: Theme.Display
            text: page.title
            Accessible.role: Accessible.Heading
            Accessible.name: text
        }

        Label {
            width: parent.width
            role: Theme.Sentence
            topPadding: Theme.space6 + Theme.lead(role)
            color: Theme.text2
            wrapMode: Text.Wrap
            elide: Text.ElideNone
            text: page.text
        }

        Item {
            width: Theme.hairline
            height: Theme.space32
        }

        Column {
            id: parts

            width: parent.width
            spacing: Theme.space20
        }
    }
}
