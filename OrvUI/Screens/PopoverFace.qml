import OrvLauncher.Screens
import QtQuick

// What menus, popovers and the status line stand on.
Rectangle {
    radius: Theme.radiusCard
    color: Theme.raised
    border.width: Theme.hairline
    border.color: Theme.borderStrong

    Shadow {
        anchors.fill: parent
        z: -1
        level: 3
        radius: parent.radius
    }
}
