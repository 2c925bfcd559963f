import OrvLauncher.Screens
import QtQuick

// The title of a list in the quick panel, with its count.
Item {
    id: heading

    property alias text: title.text
    property int count: 0

    width: parent.width
    height: Theme.panelHeadingHeight

    Label {
        id: title

        x: Theme.space20
        y: Theme.space12
        role: Theme.SmallStrong
        color: Theme.text3
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Figures {
        anchors.left: title.right
        anchors.leftMargin: Theme.space6
        anchors.verticalCenter: title.verticalCenter
        role: Theme.Small
        color: Theme.text3
        text: heading.count
    }
}
