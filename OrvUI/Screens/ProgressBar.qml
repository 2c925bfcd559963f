import OrvLauncher.Screens
import QtQuick

// How many of some steps are done; half of the running one counts.
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
        width: bar.total > 0 ? Math.round(bar.width * Math.min(1, (bar.done + 0.5) / bar.total)) : 0
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
