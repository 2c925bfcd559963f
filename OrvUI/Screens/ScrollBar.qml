import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

T.ScrollBar {
    id: bar

    implicitWidth: Theme.scrollBar
    padding: Theme.space2
    minimumSize: 0.06
    visible: size < 1

    contentItem: Rectangle {
        implicitWidth: Theme.scrollBar - 2 * Theme.space2
        radius: width / 2
        color: bar.pressed || bar.hovered ? Theme.text3 : Theme.borderStrong
        opacity: bar.active || bar.hovered ? 1 : 0

        Behavior on opacity {
            NumberAnimation {
                duration: Theme.durationFast
            }
        }
    }
}
