import OrvLauncher.Screens
import QtQuick

// The mark: the bolt on a disc of the accent.
Rectangle {
    implicitWidth: Theme.mark
    implicitHeight: Theme.mark
    radius: width / 2
    color: Theme.accent

    Icon {
        anchors.centerIn: parent
        name: "own-bolt"
        size: Theme.iconSmall
        color: Theme.onAccent
    }
}
