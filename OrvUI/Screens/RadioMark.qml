import OrvLauncher.Screens
import QtQuick

// A round, with a dot in it where it is the one that is chosen.
Rectangle {
    id: mark

    property bool checked: false
    property bool hovered: false

    implicitWidth: Theme.checkbox
    implicitHeight: Theme.checkbox
    radius: width / 2
    color: mark.checked ? Theme.accent : "transparent"
    border.width: mark.checked ? 0 : Theme.hairline
    border.color: mark.hovered ? Theme.accent : Theme.text3

    Rectangle {
        anchors.centerIn: parent
        visible: mark.checked
        width: Theme.space6
        height: width
        radius: width / 2
        color: Theme.onAccent
    }
}
