import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// On or off, at once, by Space: Return is for the button that a sheet is settled with. What it stands for is its name.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.CheckBox

    implicitWidth: Theme.switchWidth
    implicitHeight: Theme.switchHeight
    checkable: true
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked

    background: Rectangle {
        radius: height / 2
        color: !control.enabled ? Theme.control : control.checked ? (control.hovered ? Theme.accentHover : Theme.accent) : control.hovered ? Qt.tint(Theme.borderStrong, Theme.hover) : Theme.borderStrong
        border.width: control.checked ? 0 : Theme.hairline
        border.color: Theme.text3

        Behavior on color {
            ColorAnimation {
                duration: Theme.durationFast
            }
        }

        FocusRing {
            control: control
            shapeRadius: parent.height / 2
        }
    }

    contentItem: Item {
        Rectangle {
            id: thumb

            x: control.checked ? parent.width - width - Theme.switchInset : Theme.switchInset
            anchors.verticalCenter: parent.verticalCenter
            width: parent.height - 2 * Theme.switchInset
            height: width
            radius: width / 2
            color: !control.enabled ? Theme.disabled : control.checked ? Theme.onAccent : Theme.text

            Behavior on x {
                enabled: !Theme.reducedMotion

                NumberAnimation {
                    duration: Theme.durationFast
                    easing.type: Easing.BezierSpline
                    easing.bezierCurve: Theme.easeStandard
                }
            }
        }
    }
}
