import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// One of several, by a round with a dot. Its words stand beside it.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.RadioButton

    implicitWidth: Theme.controlMini
    implicitHeight: Theme.controlMini
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checked: checked

    background: Item {}

    contentItem: Item {
        RadioMark {
            anchors.centerIn: parent
            checked: control.checked
            hovered: control.hovered

            FocusRing {
                control: control
                shapeRadius: parent.radius
            }
        }
    }
}
