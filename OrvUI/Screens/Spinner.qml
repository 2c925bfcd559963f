import OrvLauncher.Screens
import QtQuick

// Turns while it can be seen; where motion is reduced it is a still ring.
Item {
    id: spinner

    property int size: Theme.iconSmall
    property color color: Theme.accent

    implicitWidth: size
    implicitHeight: size

    Icon {
        id: ring

        name: Theme.reducedMotion ? "own-ring" : "own-spinner"
        size: spinner.size
        color: spinner.color
        width: spinner.size
        height: spinner.size

        RotationAnimator on rotation {
            from: 0
            to: 360
            duration: Theme.durationSpin
            loops: Animation.Infinite
            running: spinner.visible && !Theme.reducedMotion
        }
    }
}
