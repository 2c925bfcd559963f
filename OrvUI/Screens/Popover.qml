import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A popup with a face; Escape and a press outside close it.
T.Popup {
    id: popover

    margins: Theme.space8
    padding: Theme.space6
    focus: true
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding

    enter: Transition {
        NumberAnimation {
            property: "opacity"
            from: 0
            to: 1
            duration: Theme.durationEnter
        }

        NumberAnimation {
            property: "scale"
            from: Theme.reducedMotion ? 1 : 0.98
            to: 1
            duration: Theme.durationEnter
            easing.type: Easing.BezierSpline
            easing.bezierCurve: Theme.easeEnter
        }
    }

    exit: Transition {
        NumberAnimation {
            property: "opacity"
            to: 0
            duration: Theme.durationExit
        }
    }

    background: PopoverFace {}
}
