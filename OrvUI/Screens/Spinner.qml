import OrvLauncher.Screens
import QtQuick

// Turns while it can be seen; a still ring where motion is reduced, or where it may stay for hours.
Item {
    id: spinner

    property int size: Theme.iconSmall
    property color color: Theme.accent
    property bool still: false

    implicitWidth: size
    implicitHeight: size

    Icon {
        id: ring

        name: Theme.reducedMotion || spinner.still ? "own-ring" : "own-spinner"
        size: spinner.size
        color: spinner.color
        width: spinner.size
        height: spinner.size

        RotationAnimator on rotation {
            from: 0
            to: 360
            duration: Theme.durationSpin
            loops: Animation.Infinite
            running: spinner.visible && !spinner.still && !Theme.reducedMotion
        }
    }
}
