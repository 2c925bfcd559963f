import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// The round of a to-do item: empty, or full with a check.
T.AbstractButton {
    id: round

    property int toldRole: Accessible.CheckBox
    property int ring: Theme.taskRound
    // From its edge to the ring, which is smaller than what takes the click.
    readonly property int inset: (implicitWidth - ring) / 2

    implicitWidth: Theme.controlMini
    implicitHeight: Theme.controlMini
    checkable: true
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checkable: true
    Accessible.checked: checked

    background: Item {
        Rectangle {
            anchors.centerIn: parent
            width: round.ring
            height: width
            radius: width / 2
            color: round.checked ? Theme.accent : "transparent"
            border.width: round.checked ? 0 : Theme.focusWidth - 0.5
            border.color: round.hovered ? Theme.accent : Theme.text3

            FocusRing {
                control: round
                shapeRadius: parent.radius
            }
        }
    }

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            visible: round.checked
            name: "check"
            size: Theme.iconMini
            color: Theme.onAccent
        }
    }
}
