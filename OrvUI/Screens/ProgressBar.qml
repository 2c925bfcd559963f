import OrvLauncher.Screens
import QtQuick

// How many of some steps are done. The one that runs glows: how far it is, nobody knows.
Rectangle {
    id: bar

    required property int done
    required property int total

    implicitHeight: Theme.progressHeight
    radius: height / 2
    color: Theme.control
    Accessible.role: Accessible.ProgressBar
    Accessible.name: qsTr("%1 of %2 done").arg(done).arg(total)

    Rectangle {
        id: glow

        x: bar.total > 0 ? Math.round(bar.width * bar.done / bar.total) : 0
        width: bar.total > bar.done ? Math.round(bar.width / bar.total) : 0
        height: parent.height
        radius: height / 2
        color: Theme.accent
        opacity: 0.35

        SequentialAnimation {
            running: bar.visible && bar.total > bar.done && !Theme.reducedMotion
            loops: Animation.Infinite

            NumberAnimation {
                target: glow
                property: "opacity"
                from: 0.15
                to: 0.5
                duration: Theme.durationPulse / 2
                easing.type: Easing.InOutQuad
            }

            NumberAnimation {
                target: glow
                property: "opacity"
                from: 0.5
                to: 0.15
                duration: Theme.durationPulse / 2
                easing.type: Easing.InOutQuad
            }
        }
    }

    Rectangle {
        width: bar.total > 0 ? Math.round(bar.width * Math.min(1, bar.done / bar.total)) : 0
        height: parent.height
        radius: height / 2
        color: Theme.accent

        Behavior on width {
            enabled: !Theme.reducedMotion

            NumberAnimation {
                duration: Theme.durationSheet
            }
        }
    }
}
