import OrvLauncher.Screens
import QtQuick
import QtQuick.Templates as T

// A colour to choose.
T.AbstractButton {
    id: control

    property int toldRole: Accessible.RadioButton
    required property color fill

    implicitWidth: Theme.controlMini
    implicitHeight: Theme.controlMini
    focusPolicy: Qt.StrongFocus
    hoverEnabled: true
    Accessible.role: toldRole
    Accessible.name: text
    Accessible.checked: checked
    Keys.onReturnPressed: control.clicked()
    Keys.onEnterPressed: control.clicked()

    background: Rectangle {
        radius: width / 2
        color: control.fill
        border.width: control.hovered ? Theme.hairline : 0
        border.color: Theme.text

        FocusRing {
            control: control
            shapeRadius: parent.radius
        }
    }

    contentItem: Icon {
        visible: control.checked
        name: "check"
        size: Theme.iconSmall
        color: Theme.onFill(control.fill)
    }

    Tip {
        text: control.text
    }
}
