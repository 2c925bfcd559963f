import QtQuick

// A picture, a heading and a line where a page has nothing to show; buttons come from outside.
Column {
    id: empty

    property alias picture: picture.name
    property alias heading: heading.text
    property alias text: text.text
    property bool large: false
    default property alias actions: actions.data

    width: Math.min(Theme.emptyWidth, parent ? parent.width - Theme.space32 : Theme.emptyWidth)
    spacing: Theme.space4

    Illustration {
        id: picture

        anchors.horizontalCenter: parent.horizontalCenter
    }

    Item {
        width: Theme.hairline
        height: Theme.space16
    }

    Label {
        id: heading

        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        role: empty.large ? Theme.Title : Theme.Heading
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Label {
        id: text

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
