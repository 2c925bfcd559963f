import OrvLauncher.Screens
import QtQuick

// Fills a part of the content panel down to one of its lower corners, which stays round.
Item {
    id: fill

    required property color color
    property bool leftCorner: false
    readonly property int radius: Theme.radiusCard - Theme.hairline

    Rectangle {
        anchors.fill: parent
        radius: fill.radius
        color: fill.color
    }

    Rectangle {
        width: parent.width
        height: parent.height - fill.radius
        color: fill.color
    }

    Rectangle {
        x: fill.leftCorner ? fill.radius : 0
        width: parent.width - fill.radius
        height: parent.height
        color: fill.color
    }
}
