import OrvLauncher.Screens
import QtQuick

// What cards and shelf items stand on.
Rectangle {
    radius: Theme.radiusCard
    color: Theme.surface
    border.width: Theme.hairline
    border.color: Theme.border

    Shadow {
        anchors.fill: parent
        z: -1
        radius: parent.radius
    }
}
