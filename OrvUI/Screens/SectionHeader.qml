import OrvLauncher.Screens
import QtQuick

// The title of a shelf with its count; what is put into it stands at the right.
Item {
    id: header

    property alias text: title.text
    property int count: 0
    property bool showsCount: true
    property bool large: false
    default property alias actions: actions.data

    implicitHeight: large ? Theme.controlRegular : Theme.space24

    Label {
        id: title

        anchors.verticalCenter: parent.verticalCenter
        width: Math.min(implicitWidth, header.width - actions.width - Theme.space40)
        role: header.large ? Theme.Heading : Theme.Section
        Accessible.role: Accessible.Heading
        Accessible.name: text
    }

    Figures {
        anchors.left: title.right
        anchors.leftMargin: Theme.space8
        anchors.baseline: title.baseline
        visible: header.showsCount
        role: Theme.Small
        color: Theme.text3
        text: header.count
    }

    Row {
        id: actions

        anchors.right: parent.right
        anchors.verticalCenter: parent.verticalCenter
        spacing: Theme.space8
    }
}
