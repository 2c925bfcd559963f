import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The fill and edge of a button. A face that another one joins has square corners there.
Item {
    id: face

    required property T.AbstractButton control
    property bool primary: false
    property bool ghost: false
    property bool lit: false
    property bool joinedLeft: false
    property bool joinedRight: false
    property int corner: Theme.radiusControl
    readonly property color fill: !control.enabled ? (ghost ? "transparent" : Theme.control)
        : primary ? (control.pressed ? Theme.accentPressed : control.hovered ? Theme.accentHover : Theme.accent)
        : lit ? Theme.accentSoft
        : ghost ? (control.pressed ? Theme.pressed : control.hovered ? Theme.hover : "transparent")
        : (control.pressed ? Theme.controlPressed : control.hovered ? Theme.controlHover : Theme.control)

    Item {
        anchors.fill: parent
        clip: face.joinedLeft || face.joinedRight

        Rectangle {
            anchors.fill: parent
            anchors.leftMargin: face.joinedLeft ? -radius : 0
            anchors.rightMargin: face.joinedRight ? -radius : 0
            radius: face.corner
            color: face.fill
            border.width: !face.control.enabled || face.primary || face.ghost || face.lit ? 0 : Theme.hairline
            // No fill lies below the edge.
            border.color: Qt.tint(face.fill, Theme.buttonEdge)

            Behavior on color {
                enabled: !face.control.pressed

                ColorAnimation {
                    duration: Theme.durationFast
                }
            }
        }
    }
}
