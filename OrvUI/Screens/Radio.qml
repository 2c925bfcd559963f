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
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Item {}

    contentItem: Item {
        Rectangle {
            anchors.centerIn: parent
            width: Theme.checkbox
            height: width
            radius: width / 2
            color: control.checked ? Theme.accent : "transparent"
            border.width: control.checked ? 0 : Theme.hairline
            border.color: control.hovered ? Theme.accent : Theme.text3

            Rectangle {
                anchors.centerIn: parent
                visible: control.checked
                width: Theme.space6
                height: width
                radius: width / 2
                color: Theme.onAccent
            }

            FocusRing {
                control: control
                shapeRadius: parent.radius
            }
        }
    }
}
