import OrvLauncher.Screens
import QtQuick

// Blocks in the place of what is being looked for; they pulse unless motion is reduced.
Item {
    id: skeleton

    property bool card: true

    SequentialAnimation on opacity {
        running: skeleton.visible && !Theme.reducedMotion
        loops: Animation.Infinite

        OpacityAnimator {
            from: 1
            to: 0.55
            duration: Theme.durationPulse / 2
            easing.type: Easing.InOutQuad
        }

        OpacityAnimator {
            from: 0.55
            to: 1
            duration: Theme.durationPulse / 2
            easing.type: Easing.InOutQuad
        }
    }

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusCard
        color: Theme.surface
        border.width: Theme.hairline
        border.color: Theme.border
    }

    Repeater {
        model: skeleton.card ? Theme.skeletonCard : Theme.skeletonPinned

        // x, y, width, height, radius; what counts from the far edge is negative.
        Rectangle {
            required property var modelData

            x: modelData[0] < 0 ? skeleton.width + modelData[0] : modelData[0]
            y: modelData[1]
            width: modelData[2]
            height: modelData[3]
            radius: modelData[4]
            color: Theme.skeleton
        }
    }
}
