import OrvLauncher.Screens
import QtQuick

// A picture, a heading and a line where a page has nothing to show; buttons come from outside.
Column {
    id: empty

    property alias picture: drawing.name
    property alias heading: title.text
    property alias text: sentence.text
    property bool large: false
    default property alias actions: actions.data

    width: Theme.emptyWidth
    spacing: Theme.space2

    Illustration {
        id: drawing

        anchors.horizontalCenter: parent.horizontalCenter
    }

    Item {
        width: Theme.hairline
        height: Theme.space24
    }

    Label {
        id: title

        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        role: empty.large ? Theme.Title : Theme.Heading
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Label {
        id: sentence

        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        color: Theme.text2
        wrapMode: Text.Wrap
        elide: Text.ElideNone
    }

    Item {
        width: Theme.hairline
        height: Theme.space12
    }

    Row {
        id: actions

        anchors.horizontalCenter: parent.horizontalCenter
        spacing: Theme.space8
    }
}
